# clang and its linker for 64-bit Windows, with the headers, the C++ library and the runtime of
# mingw-w64's GCC: what ships is built with them. The runtime with the system's own threads, because
# the other one brings a thread library (and handles) that nothing here needs.
if(NOT DEFINED VOK_LLVM)
  set(VOK_LLVM 19)
endif()
if(NOT DEFINED VOK_THREADS)
  set(VOK_THREADS win32)
endif()
set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR AMD64)
set(CMAKE_C_COMPILER clang-${VOK_LLVM})
set(CMAKE_CXX_COMPILER clang++-${VOK_LLVM})
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_AR llvm-ar-${VOK_LLVM})
set(CMAKE_RANLIB llvm-ranlib-${VOK_LLVM})
set(CMAKE_RC_COMPILER x86_64-w64-mingw32-windres)

# clang would take whichever of the two runtimes it finds.
set(gcc x86_64-w64-mingw32-g++-${VOK_THREADS})
execute_process(COMMAND ${gcc} -print-file-name=include/c++
  OUTPUT_VARIABLE gcc_include OUTPUT_STRIP_TRAILING_WHITESPACE)
execute_process(COMMAND ${gcc} -print-libgcc-file-name
  OUTPUT_VARIABLE gcc_library OUTPUT_STRIP_TRAILING_WHITESPACE)
cmake_path(GET gcc_library PARENT_PATH gcc_libraries)
set(CMAKE_CXX_FLAGS_INIT
  "-nostdinc++ -isystem ${gcc_include} -isystem ${gcc_include}/x86_64-w64-mingw32")
set(link_flags "-fuse-ld=lld -L${gcc_libraries}")
if(VOK_THREADS STREQUAL posix)
  string(APPEND link_flags " -lpthread")
endif()
foreach(kind EXE SHARED MODULE)
  set(CMAKE_${kind}_LINKER_FLAGS_INIT "${link_flags}")
endforeach()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
