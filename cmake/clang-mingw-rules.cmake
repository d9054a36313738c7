# How clang's objects are linked: by GCC's driver, which knows where its own runtime is.
set(gcc x86_64-w64-mingw32-g++-win32)
set(CMAKE_CXX_CREATE_SHARED_LIBRARY
  "${gcc} -shared <LINK_FLAGS> -o <TARGET> -Wl,--out-implib,<TARGET_IMPLIB> <OBJECTS> <LINK_LIBRARIES>")
set(CMAKE_CXX_CREATE_SHARED_MODULE "${CMAKE_CXX_CREATE_SHARED_LIBRARY}")
set(CMAKE_CXX_LINK_EXECUTABLE "${gcc} <LINK_FLAGS> <OBJECTS> -o <TARGET> <LINK_LIBRARIES>")
