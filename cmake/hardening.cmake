# What the platform's loader and debuggers expect of what ships, which the product's compiler and
# linker can make: a table of where calls by address may go, marks for the processor's shadow stack,
# symbols in the debuggers' own form, and a time stamp made out of the content, so that no two
# versions look the same to a symbol store and two builds of one do.
set(VOK_SYMBOLS ON)

add_compile_options(-mguard=cf -g -gcodeview -gno-codeview-command-line -fdebug-compilation-dir=.)
set(CMAKE_CXX_LINKER_LAUNCHER "${CMAKE_SOURCE_DIR}/cmake/relative-paths" "${CMAKE_SOURCE_DIR}")
add_link_options(-Wl,--guard-cf -Wl,-Xlink=-cetcompat -Wl,-Xlink=-Brepro
  -Wl,--dynamicbase -Wl,--high-entropy-va -Wl,--nxcompat -Wl,-u,_load_config_used
  # The oldest system of this processor, as GCC's linker says too.
  -Wl,--major-os-version,4,--minor-os-version,0
  -Wl,--major-subsystem-version,5,--minor-subsystem-version,2)

# Every program takes its load configuration from here.
add_library(vok_load_config STATIC src/runtime/load_config.cpp)
target_link_libraries(vok_load_config PRIVATE vok_warnings)
link_libraries(vok_load_config)
