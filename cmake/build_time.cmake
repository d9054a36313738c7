# What makes the build take less time: sources of tools and tests that are compiled several at a time, and
# headers that are compiled once. Each source includes what it uses all the same, and the checks compile
# it by itself.
option(VOK_MERGED "Sources of the tools and tests are compiled several at a time" ON)

# A compiler launcher, a cache as a rule, doesn't take precompiled headers as it takes other files.
if(CMAKE_CXX_COMPILER_LAUNCHER)
  set(precompile OFF)
else()
  set(precompile ON)
endif()
option(VOK_PRECOMPILED "Headers that most sources include are compiled once" ${precompile})

# vok_merge(TARGET): what its sources include is read, and what templates make of it is made, once for
# sixteen of them at most: with eight the tools take half as much processor time again (76 s against 48 s).
# CMake's own way names the sources by where they are, and the checksum of such a text, which
# is in the symbols of what ships, would be another in every folder.
function(vok_merge target)
  if(VOK_MERGED)
    # When the folder's lists have been read, and all is known of the target.
    cmake_language(EVAL CODE "cmake_language(DEFER CALL vok_merge_now ${target})")
  endif()
endfunction()

function(vok_merge_now target)
  get_target_property(sources ${target} SOURCES)
  foreach(source IN LISTS sources)
    cmake_path(ABSOLUTE_PATH source NORMALIZE OUTPUT_VARIABLE path)
    cmake_path(IS_PREFIX CMAKE_BINARY_DIR "${path}" made_by_build)
    get_source_file_property(apart "${source}" VOK_APART)
    get_source_file_property(definitions "${source}" COMPILE_DEFINITIONS)
    if(made_by_build OR apart OR definitions OR NOT source MATCHES "\\.cpp$")
      list(APPEND compiled "${source}")
    else()
      cmake_path(RELATIVE_PATH path BASE_DIRECTORY "${CMAKE_SOURCE_DIR}")
      list(APPEND merged "#include \"${path}\"")
    endif()
  endforeach()
  list(LENGTH merged count)
  if(count LESS 2)
    return()
  endif()
  math(EXPR batches "(${count} + 15) / 16")
  math(EXPR size "(${count} + ${batches} - 1) / ${batches}")
  math(EXPR last "${count} - 1")
  foreach(first RANGE 0 ${last} ${size})
    list(SUBLIST merged ${first} ${size} batch)
    list(JOIN batch "\n" batch)
    set(file "${CMAKE_CURRENT_BINARY_DIR}/${target}_${first}.cpp")
    file(CONFIGURE OUTPUT "${file}" CONTENT "${batch}\n" @ONLY)
    list(APPEND compiled "${file}")
  endforeach()
  set_target_properties(${target} PROPERTIES SOURCES "${compiled}" VOK_IS_MERGED ON)
  target_include_directories(${target} PRIVATE "${CMAKE_SOURCE_DIR}")
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

# vok_precompile_alike(TARGET…): the first has the headers that most sources include as they were compiled
# once with its options, and the others, whose options are the same, have them too.
function(vok_precompile_alike first)
  if(NOT VOK_PRECOMPILED)
    return()
  endif()
  target_precompile_headers(${first} PRIVATE "${CMAKE_SOURCE_DIR}/cmake/common_headers.h")
  foreach(target ${ARGN})
    vok_precompile(${target} ${first})
  endforeach()
endfunction()

# vok_keep_apart(SOURCE…): those whose names, or those of the system that they include, mean something else
# in another source of their target.
function(vok_keep_apart)
  set_source_files_properties(${ARGN} PROPERTIES VOK_APART ON)
endfunction()
