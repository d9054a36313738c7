# Signing by osslsigncode (a package of Debian), with CERTIFICATE, KEY and OPTIONS.

# vok_check_signing(): ends with what is missing, before anything is made.
function(vok_check_signing)
  if(NOT CERTIFICATE)
    if(KEY)
      message(FATAL_ERROR "there is a key to sign with and no certificate: set VOK_CERTIFICATE")
    endif()
    return()
  endif()
  foreach(file "${CERTIFICATE}" "${KEY}")
    if(NOT EXISTS "${file}" OR IS_DIRECTORY "${file}")
      message(FATAL_ERROR "can't sign the driver package: no such file: '${file}' (VOK_CERTIFICATE, VOK_CERTIFICATE_KEY)")
    endif()
  endforeach()
  find_program(OSSLSIGNCODE osslsigncode)
  if(NOT OSSLSIGNCODE)
    message(FATAL_ERROR "can't sign the driver package: osslsigncode is missing (a package of Debian)")
  endif()
endfunction()

# vok_sign(FILE ERROR): signs it in its place; ERROR is why not, or nothing.
function(vok_sign file error)
  execute_process(COMMAND "${OSSLSIGNCODE}" sign -h sha256 -certs "${CERTIFICATE}" -key "${KEY}" ${OPTIONS}
      -in "${file}" -out "${file}.signed"
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE status)
  set(${error} "" PARENT_SCOPE)
  if(status EQUAL 0)
    file(RENAME "${file}.signed" "${file}")
  else()
    set(${error} "exit status ${status}: ${output}" PARENT_SCOPE)
  endif()
endfunction()
