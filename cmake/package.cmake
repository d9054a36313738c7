# The SDK: cmake --install build/product --prefix DIR, or the zip by cpack (preset product).

include(CMakePackageConfigHelpers)

set(package_dir lib/cmake/vok)
configure_package_config_file(cmake/vokConfig.cmake.in "${CMAKE_BINARY_DIR}/vokConfig.cmake"
  INSTALL_DESTINATION "${package_dir}")
write_basic_package_version_file("${CMAKE_BINARY_DIR}/vokConfigVersion.cmake"
  COMPATIBILITY SameMajorVersion)

install(DIRECTORY include/vok DESTINATION include)
install(FILES "${CMAKE_BINARY_DIR}/vokConfig.cmake" "${CMAKE_BINARY_DIR}/vokConfigVersion.cmake"
  DESTINATION "${package_dir}")
install(FILES cmake/mingw-win32.cmake cmake/clang-mingw.cmake
  DESTINATION cmake)
install(DIRECTORY samples DESTINATION .)
install(DIRECTORY docs DESTINATION .)
install(FILES CHANGELOG.md SECURITY.md DESTINATION .)
# The README of the source tree speaks of commands that are not in the package.
install(FILES cmake/package_readme.md DESTINATION . RENAME README.md)

install(FILES tools/log/lnav/vok_log.json DESTINATION lnav)

# The programs that run on the customer's machine, ready built.
foreach(tool vok_doctor vok_companion_check vok_log)
  if(TARGET ${tool})
    install(TARGETS ${tool} RUNTIME DESTINATION bin)
  endif()
endforeach()

include(cmake/linked.cmake)
configure_file(cmake/notices.cmake.in "${CMAKE_BINARY_DIR}/notices.cmake" @ONLY)
install(SCRIPT "${CMAKE_BINARY_DIR}/notices.cmake")

# What shows it all on a Windows machine where nothing can be built.
configure_file(cmake/run.cmd.in "${CMAKE_BINARY_DIR}/run.cmd" @ONLY NEWLINE_STYLE DOS)
install(PROGRAMS "${CMAKE_BINARY_DIR}/run.cmd" DESTINATION .)
install(TARGETS vok_install vok_print RUNTIME DESTINATION demo)
# The driver package of the samples, ready made for this model.
install(DIRECTORY "${CMAKE_BINARY_DIR}/driver/" DESTINATION driver)

# cpack's own zips list the files in the order in which the file system happens to hold them.
set(CPACK_GENERATOR External)
set(CPACK_EXTERNAL_ENABLE_STAGING ON)
set(CPACK_EXTERNAL_PACKAGE_SCRIPT "${CMAKE_SOURCE_DIR}/cmake/make_zip.cmake")
set(CPACK_VOK_LINKED "${VOK_LINKED}")
set(CPACK_VOK_OWNER "${CMAKE_SOURCE_DIR}/cmake/owner.cmake")
set(CPACK_VOK_COMPILER "${CMAKE_CXX_COMPILER_ID}")
set(CPACK_VOK_COMPILER_FILE "${CMAKE_CXX_COMPILER}")
if(CMAKE_CXX_COMPILER_ID STREQUAL Clang)
  set(CPACK_VOK_LINKER_FILE ld.lld-${VOK_LLVM})
endif()
set(CPACK_PACKAGE_NAME vok)
set(CPACK_PACKAGE_VERSION "${PROJECT_VERSION}")
set(CPACK_PACKAGE_FILE_NAME "vok-${PROJECT_VERSION}-windows-x64")
set(CPACK_PACKAGE_DIRECTORY "${CMAKE_BINARY_DIR}/package")
include(CPack)
