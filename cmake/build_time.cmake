# What makes the build of tools and tests take less time: sources that are compiled several at a time, and
# headers that are compiled once. Each source includes what it uses all the same, and the checks compile
# it by itself.
option(VOK_MERGED "Sources of the tools and tests are compiled several at a time" ON)

# A compiler launcher, a cache as a rule, doesn't take precompiled headers as it takes other files.
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(precompile OFF)
else()
  set(precompile ON)
endif()
option(VOK_PRECOMPILED "The tests' common headers are compiled once" ${precompile})

# vok_merge(TARGET): what they include is read, and what templates make of it is made, once for eight.
# Not where symbols ship: they have a checksum of each source, and that of merged ones is another in every
# folder, because it names the sources by where they are.
function(vok_merge target)
  if(VOK_MERGED AND NOT VOK_SYMBOLS)
    set_target_properties(${target} PROPERTIES UNITY_BUILD ON UNITY_BUILD_BATCH_SIZE 8)
  endif()
endfunction()

# vok_precompile(TARGET [HEADERS]): lets it have the common headers as they were compiled once.
function(vok_precompile target)
  if(NOT VOK_PRECOMPILED)
    return()
  endif()
  if(ARGC EQUAL 1)
    list(APPEND ARGN vok_common_headers)
  endif()
  target_precompile_headers(${target} REUSE_FROM ${ARGN})
  if(CMAKE_CXX_COMPILER_ID STREQUAL GNU)
    # GCC forgets that their code is the system's, and warns of what it otherwise knows to leave
    # alone: no reason to end a build.
    target_compile_options(${target} PRIVATE -Wno-error=array-bounds -Wno-error=stringop-overflow
      -Wno-error=stringop-overread -Wno-error=restrict -Wno-error=maybe-uninitialized)
  endif()
endfunction()

# vok_keep_apart(SOURCE…): those whose names, or those of the system that they include, mean something else
# in another source of their target.
function(vok_keep_apart)
  set_source_files_properties(${ARGN} PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
endfunction()
