# How test programs are run: each test by itself, or all of a program's together.

# vok_discover_tests(TARGET SECONDS [ALONE] [OPTION…]): registers its tests with ctest, each with so much time.
# They come one after another, so that the first can run all of them where run_one is told to. The
# limit for each test is the program's own then, ctest's is for all of them. TARGET_cost lets those that
# take long begin before the others, so that no processor is left without work at the end. Those of an
# ALONE program run each in a process of its own always.
function(vok_discover_tests target seconds)
  cmake_parse_arguments(PARSE_ARGV 2 arg ALONE TEST_PREFIX PROPERTIES)
  if(NOT DEFINED ${target}_cost)
    set(${target}_cost 0)
  endif()
  math(EXPR all_seconds "${seconds} + 1200")
  if(NOT arg_ALONE)
    set_property(TARGET ${target} PROPERTY CROSSCOMPILING_EMULATOR
      "${CMAKE_SOURCE_DIR}/tests/together/run_one")
  endif()
  gtest_discover_tests(${target} DISCOVERY_MODE PRE_TEST DISCOVERY_TIMEOUT 600
    TEST_PREFIX "${arg_TEST_PREFIX}"
    PROPERTIES TIMEOUT ${all_seconds} RESOURCE_LOCK ${target} COST ${${target}_cost}
               ENVIRONMENT VOK_TEST_TIMEOUT=${seconds} ${arg_PROPERTIES})
endfunction()

# vok_add_quick(NAME [TARGETS …] PROGRAM … | COMMAND … [FILES …] [PARTS n] [SECONDS n] [DIRECTORY …]):
# what ./test --quick runs, unless it has passed with the same bytes in FILES, folders included, and
# in the product if a file has its path; without FILES every time. TARGETS are built first. The
# tests of a PROGRAM run together, or in several PARTS at once.
function(vok_add_quick name)
  if(NOT TARGET vok_quick)
    add_custom_target(vok_quick)
  endif()
  cmake_parse_arguments(PARSE_ARGV 1 arg "" "PROGRAM;PARTS;SECONDS;DIRECTORY" "TARGETS;COMMAND;FILES")
  if(arg_TARGETS)
    add_dependencies(vok_quick ${arg_TARGETS})
  endif()
  foreach(list COMMAND FILES)
    set(${list} "")
    foreach(word IN LISTS arg_${list})
      string(APPEND ${list} "\"${word}\", ")
    endforeach()
    string(REGEX REPLACE ", $" "" ${list} "${${list}}")
  endforeach()
  set_property(GLOBAL APPEND_STRING PROPERTY vok_quick
    "{\"name\": \"${name}\", \"program\": \"${arg_PROGRAM}\", \"parts\": \"${arg_PARTS}\", \
\"seconds\": \"${arg_SECONDS}\", \"directory\": \"${arg_DIRECTORY}\", \
\"command\": [${COMMAND}], \"files\": [${FILES}]}\n")
endfunction()

# A test program, and TARGET_files beside the product that it loads; TARGET_parts as above.
function(vok_add_quick_program target seconds)
  vok_add_quick(${target} TARGETS ${target} PROGRAM "$<TARGET_FILE:${target}>"
    PARTS "${${target}_parts}" SECONDS ${seconds} FILES "$<TARGET_FILE:${target}>" ${${target}_files})
endfunction()

function(vok_write_quick_list)
  get_property(entries GLOBAL PROPERTY vok_quick)
  file(GENERATE OUTPUT "${CMAKE_BINARY_DIR}/quick.jsonl" CONTENT "${entries}")
endfunction()
