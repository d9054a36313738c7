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
  foreach(program osslsigncode python3)
    string(TOUPPER ${program} path)
    find_program(${path} ${program})
    if(NOT ${path})
      message(FATAL_ERROR "can't sign the driver package: ${program} is missing (a package of Debian)")
    endif()
  endforeach()
endfunction()

# vok_make_catalog(FOLDER CATALOG ERROR): the list of the folder's files that Windows asks for.
function(vok_make_catalog folder catalog error)
  execute_process(COMMAND "${PYTHON3}" -B "${CMAKE_CURRENT_FUNCTION_LIST_DIR}/catalog.py" "${folder}" "${catalog}"
    OUTPUT_VARIABLE output ERROR_VARIABLE output RESULT_VARIABLE status)
  set(${error} "" PARENT_SCOPE)
  if(NOT status EQUAL 0)
    set(${error} "catalog.py: ${output}" PARENT_SCOPE)
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
    set(${error} "osslsigncode: ${output}" PARENT_SCOPE)
  endif()
endfunction()
