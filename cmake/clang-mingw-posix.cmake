# The same with POSIX threads, which GoogleTest and std::thread need: for the tests.
set(VOK_THREADS posix)
include("${CMAKE_CURRENT_LIST_DIR}/clang-mingw.cmake")
