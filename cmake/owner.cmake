# vok_ask_owner(FILE PACKAGE VERSION): which of the distribution's packages a file is from, and in which
# version it is installed. What ships says what was built into it: without an answer it isn't made.
function(vok_ask_owner file package version)
  get_filename_component(file "${file}" REALPATH)
  execute_process(COMMAND dpkg-query --search "${file}"
    OUTPUT_VARIABLE found ERROR_VARIABLE error RESULT_VARIABLE status OUTPUT_STRIP_TRAILING_WHITESPACE)
  if(NOT status EQUAL 0)
    message(FATAL_ERROR "No Debian package is known that ${file} is from, so the package can't say what was "
      "built into it: pack it on Debian, with what the build needs from there (${status}${error})")
  endif()
  string(REGEX REPLACE ":.*" "" name "${found}")
  execute_process(COMMAND dpkg-query --show "--showformat=\${Version}" "${name}"
    OUTPUT_VARIABLE installed COMMAND_ERROR_IS_FATAL ANY)
  set(${package} "${name}" PARENT_SCOPE)
  set(${version} "${installed}" PARENT_SCOPE)
endfunction()
