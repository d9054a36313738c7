# Who the programs' version resources name. The terms of the work are its owner's to choose.
set(VOK_COMPANY_NAME "${PROJECT_NAME}" CACHE STRING "CompanyName of the programs' version resources")
set(VOK_LEGAL_COPYRIGHT "${PROJECT_NAME}" CACHE STRING "LegalCopyright of the programs' version resources")

# vok_resource_text(VARIABLE TEXT): a text as it stands between a resource's quotes.
function(vok_resource_text variable text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\"\"" text "${text}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# vok_ship(TARGET DESCRIPTION FILE): gives a DLL or program that ships its version resource, with the
# project's version, and its symbols apart from it; FILE is the name that it ships under.
function(vok_ship target description file)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(file_type VFT_APP)
  else()
    set(file_type VFT_DLL)
  endif()
  vok_resource_text(company "${VOK_COMPANY_NAME}")
  vok_resource_text(copyright "${VOK_LEGAL_COPYRIGHT}")
  configure_file("${CMAKE_SOURCE_DIR}/cmake/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
  target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")

  if(VOK_SYMBOLS)
    cmake_path(REPLACE_EXTENSION file pdb OUTPUT_VARIABLE symbols)
    set(symbols "${CMAKE_PDB_OUTPUT_DIRECTORY}/${symbols}")
    # Neither the file nor its symbols tell where they were built.
    target_link_options(${target} PRIVATE "-Wl,--pdb=${symbols}"
      -Wl,-Xlink=-pdbaltpath:%_PDB% -Wl,-Xlink=-pdbsourcepath:.)
    set_target_properties(${target} PROPERTIES ADDITIONAL_CLEAN_FILES "${symbols}")
    # The symbols of the runtime's own objects, in the form of other systems.
    find_program(VOK_OBJCOPY llvm-objcopy-${VOK_LLVM} REQUIRED)
    add_custom_command(TARGET ${target} POST_BUILD VERBATIM
      COMMAND "${VOK_OBJCOPY}" --strip-all "$<TARGET_FILE:${target}>")
    install(FILES "${symbols}" DESTINATION symbols)
  else()
    target_link_options(${target} PRIVATE -s)
  endif()
endfunction()
