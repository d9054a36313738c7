# vok_add_headers(TARGET NAME…): gives a tool packages that are headers alone: CLI (CLI11), fmt,
# nlohmann (JSON for Modern C++). A cross compiler must not see the other headers beside them, so they
# get a folder of their own.
function(vok_add_headers target)
  set(folder "${CMAKE_CURRENT_BINARY_DIR}/headers")
  file(MAKE_DIRECTORY "${folder}")
  foreach(name ${ARGN})
    find_path(${name}_parent NAMES ${name} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH
      REQUIRED)
    file(CREATE_LINK "${${name}_parent}/${name}" "${folder}/${name}" SYMBOLIC)
  endforeach()
  target_include_directories(${target} SYSTEM PUBLIC "${folder}")
endfunction()
