# Makes the folder of the driver package anew: the model's files under the names that its INF has for
# them, signed when there is a certificate.
include("${CMAKE_CURRENT_LIST_DIR}/sign.cmake")
vok_check_signing()

file(REMOVE_RECURSE "${FOLDER}")
file(MAKE_DIRECTORY "${FOLDER}")
foreach(part "${LIBRARY}=vok.dll" "${CONFIG}=cfg.dll" "${COMPANION}=DRAL.EXE" "${COMPANION}=NEMB.EXE"
    "${PROCESSOR}=proc.dll" "${UI}=ui.dll")
  string(REGEX MATCH "^(.*)=([^=]*)$" part "${part}")
  configure_file("${CMAKE_MATCH_1}" "${FOLDER}/${PREFIX}${CMAKE_MATCH_2}" COPYONLY)
endforeach()
file(COPY "${INF}" DESTINATION "${FOLDER}")

if(NOT CERTIFICATE)
  message(STATUS "the driver package is not signed: no VOK_CERTIFICATE")
  return()
endif()
file(GLOB programs "${FOLDER}/*.dll" "${FOLDER}/*.EXE")
set(catalog "${FOLDER}/${PREFIX}drv.cat")
foreach(file IN LISTS programs ITEMS "${catalog}")
  if(file STREQUAL catalog)
    vok_make_catalog("${FOLDER}" "${catalog}" error)
  endif()
  if(NOT error)
    vok_sign("${file}" error)
  endif()
  if(error)
    # Half a signed package is none.
    file(REMOVE_RECURSE "${FOLDER}")
    message(FATAL_ERROR "can't sign ${file}: ${error}")
  endif()
endforeach()
