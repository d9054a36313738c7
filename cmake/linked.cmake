# What is built into the programs from elsewhere: "linked(ID NAME LICENCE FILE PROGRAMS)" in a script
# that those include who tell it (notices.cmake, make_zip.cmake), each with a `linked` of its own. FILE
# is one of those that are built in; its package tells the version and the whole text of its licence.

set(VOK_LINKED "${CMAKE_BINARY_DIR}/linked.cmake")
file(WRITE "${VOK_LINKED}" "")
function(vok_linked id name licence file programs)
  file(APPEND "${VOK_LINKED}" "linked(${id} \"${name}\" \"${licence}\" \"${file}\" \"${programs}\")\n")
endfunction()

# vok_runtime_file(NAME VARIABLE): whichever compiler builds, its C++ library and runtime are GCC's.
find_program(VOK_RUNTIME_COMPILER NAMES x86_64-w64-mingw32-g++-win32 x86_64-w64-mingw32-g++ REQUIRED)
function(vok_runtime_file name variable)
  execute_process(COMMAND "${VOK_RUNTIME_COMPILER}" "-print-file-name=${name}"
    OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE COMMAND_ERROR_IS_FATAL ANY)
  set(${variable} "${file}" PARENT_SCOPE)
endfunction()

vok_runtime_file(libstdc++.a libstdcxx)
vok_linked(runtime "GCC runtime libraries (libgcc, libstdc++)" "GPL-3.0-or-later WITH GCC-exception-3.1"
  "${libstdcxx}" "every program and library")
vok_runtime_file(libmingw32.a libmingw32)
vok_linked(mingw-w64 "mingw-w64 runtime" ZPL-2.1 "${libmingw32}" "every program and library")
if(TARGET vok_log)
  set(tools "vok-log.exe, vok-doctor.exe, vok-companion-check.exe")
  vok_linked(zlib zlib Zlib "${ZLIB_LIBRARY}" vok-log.exe)
  vok_linked(fmt "{fmt}" MIT "${fmt_parent}/fmt/core.h" "${tools}")
  vok_linked(cli11 CLI11 BSD-3-Clause "${CLI_parent}/CLI/CLI.hpp" "${tools}")
  vok_linked(json "JSON for Modern C++" MIT "${nlohmann_parent}/nlohmann/json.hpp" "${tools}")
endif()
