# Who the programs' version resources name. The terms of the work are its owner's to choose.
set(VOK_COMPANY_NAME "${PROJECT_NAME}" CACHE STRING "CompanyName of the programs' version resources")
set(VOK_LEGAL_COPYRIGHT "${PROJECT_NAME}" CACHE STRING "LegalCopyright of the programs' version resources")

# vok_resource_text(VARIABLE TEXT): a text as it stands between a resource's quotes.
function(vok_resource_text variable text)
  string(REPLACE "\\" "\\\\" text "${text}")
  string(REPLACE "\"" "\"\"" text "${text}")
  set(${variable} "${text}" PARENT_SCOPE)
endfunction()

# vok_add_version(TARGET DESCRIPTION FILE): gives a DLL or program its version resource, with the
# project's version; FILE is the name that it ships under.
function(vok_add_version target description file)
  if(NOT WIN32)
    return()
  endif()
  get_target_property(type ${target} TYPE)
  if(type STREQUAL "EXECUTABLE")
    set(file_type VFT_APP)
  else()
    set(file_type VFT_DLL)
  endif()
  vok_resource_text(company "${VOK_COMPANY_NAME}")
  vok_resource_text(copyright "${VOK_LEGAL_COPYRIGHT}")
  configure_file("${CMAKE_SOURCE_DIR}/cmake/version.rc.in" "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc" @ONLY)
  target_sources(${target} PRIVATE "${CMAKE_CURRENT_BINARY_DIR}/${target}.rc")
endfunction()
