# Run by cpack over the staged package: says what is in it (SHA256SUMS, an SPDX bill of materials),
# and packs it in a fixed order and with one time for all files, so that the same sources give the
# same bytes.

set(root "${CPACK_TEMPORARY_DIRECTORY}")

file(GLOB_RECURSE files RELATIVE "${root}" "${root}/*")
list(SORT files)

set(sums "")
set(spdx_files "")
set(spdx_contains "")
set(all_sha1 "")
set(separator "")
foreach(file IN LISTS files)
  file(SHA256 "${root}/${file}" sum)
  file(SHA1 "${root}/${file}" sha1)
  string(APPEND sums "${sum}  ${file}\n")
  string(MD5 id "${file}")
  string(APPEND spdx_files "${separator}
    {
      \"SPDXID\": \"SPDXRef-File-${id}\",
      \"fileName\": \"./${file}\",
      \"checksums\": [
        { \"algorithm\": \"SHA1\", \"checksumValue\": \"${sha1}\" },
        { \"algorithm\": \"SHA256\", \"checksumValue\": \"${sum}\" }
      ],
      \"licenseConcluded\": \"NOASSERTION\",
      \"copyrightText\": \"NOASSERTION\"
    }")
  string(APPEND spdx_contains ",
    { \"spdxElementId\": \"SPDXRef-Package-vok\", \"relationshipType\": \"CONTAINS\",
      \"relatedSpdxElement\": \"SPDXRef-File-${id}\" }")
  list(APPEND all_sha1 "${sha1}")
  set(separator ",")
endforeach()
# The package verification code, as SPDX defines it.
list(SORT all_sha1)
list(JOIN all_sha1 "" verification)
string(SHA1 verification "${verification}")
string(SHA256 package_sum "${sums}")

set(contained_packages "")
set(contained_relations "")
include("${CPACK_VOK_OWNER}")
# contains(ID NAME LICENCE FILE RELATION): RELATION is what the package that FILE is from is to ours.
function(contains id name licence file relation)
  vok_ask_owner("${file}" package version)
  string(REPLACE "+" "%2B" locator "pkg:deb/debian/${package}@${version}")
  string(APPEND contained_packages ",
    {
      \"SPDXID\": \"SPDXRef-Package-${id}\",
      \"name\": \"${name}\",
      \"versionInfo\": \"${version}\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": false,
      \"licenseConcluded\": \"${licence}\",
      \"licenseDeclared\": \"${licence}\",
      \"copyrightText\": \"NOASSERTION\",
      \"externalRefs\": [
        { \"referenceCategory\": \"PACKAGE-MANAGER\", \"referenceType\": \"purl\",
          \"referenceLocator\": \"${locator}\" }
      ]
    }")
  string(APPEND contained_relations ",
    { ${relation}, \"comment\": \"${ARGN}\" }")
  set(contained_packages "${contained_packages}" PARENT_SCOPE)
  set(contained_relations "${contained_relations}" PARENT_SCOPE)
endfunction()

macro(linked id name licence file programs)
  contains(${id} "${name}" "${licence}" "${file}" "\"spdxElementId\": \"SPDXRef-Package-vok\",
      \"relationshipType\": \"STATIC_LINK\", \"relatedSpdxElement\": \"SPDXRef-Package-${id}\"" "in ${programs}")
endmacro()
include("${CPACK_VOK_LINKED}")

macro(tool id name file does)
  find_program(${id} "${file}" REQUIRED)
  contains(${id} "${name}" NOASSERTION "${${id}}" "\"spdxElementId\": \"SPDXRef-Package-${id}\",
      \"relationshipType\": \"BUILD_TOOL_OF\", \"relatedSpdxElement\": \"SPDXRef-Package-vok\"" "${does}")
endmacro()
tool(compiler "${CPACK_VOK_COMPILER}" "${CPACK_VOK_COMPILER_FILE}" "compiles all of it")
if(CPACK_VOK_LINKER_FILE)
  tool(linker LLD "${CPACK_VOK_LINKER_FILE}" "links all of it")
endif()

file(WRITE "${root}/vok.spdx.json" "{
  \"spdxVersion\": \"SPDX-2.3\",
  \"dataLicense\": \"CC0-1.0\",
  \"SPDXID\": \"SPDXRef-DOCUMENT\",
  \"name\": \"${CPACK_PACKAGE_FILE_NAME}\",
  \"documentNamespace\": \"urn:sha256:${package_sum}\",
  \"creationInfo\": {
    \"created\": \"1980-01-01T00:00:00Z\",
    \"creators\": [\"Tool: cmake/make_zip.cmake\"],
    \"comment\": \"The time is fixed: the same sources give the same package.\"
  },
  \"documentDescribes\": [\"SPDXRef-Package-vok\"],
  \"packages\": [
    {
      \"SPDXID\": \"SPDXRef-Package-vok\",
      \"name\": \"vok\",
      \"versionInfo\": \"${CPACK_PACKAGE_VERSION}\",
      \"downloadLocation\": \"NOASSERTION\",
      \"filesAnalyzed\": true,
      \"packageVerificationCode\": {
        \"packageVerificationCodeValue\": \"${verification}\",
        \"packageVerificationCodeExcludedFiles\": [\"./SHA256SUMS\", \"./vok.spdx.json\"]
      },
      \"licenseConcluded\": \"NOASSERTION\",
      \"licenseDeclared\": \"NOASSERTION\",
      \"copyrightText\": \"NOASSERTION\"
    }${contained_packages}
  ],
  \"relationships\": [
    { \"spdxElementId\": \"SPDXRef-DOCUMENT\", \"relationshipType\": \"DESCRIBES\",
      \"relatedSpdxElement\": \"SPDXRef-Package-vok\" }${contained_relations}${spdx_contains}
  ],
  \"files\": [${spdx_files}
  ]
}
")
file(SHA256 "${root}/vok.spdx.json" sum)
string(APPEND sums "${sum}  vok.spdx.json\n")
file(WRITE "${root}/SHA256SUMS" "${sums}")

list(TRANSFORM files PREPEND "${CPACK_PACKAGE_FILE_NAME}/" OUTPUT_VARIABLE names)
list(APPEND names "${CPACK_PACKAGE_FILE_NAME}/SHA256SUMS" "${CPACK_PACKAGE_FILE_NAME}/vok.spdx.json")
list(SORT names)
list(JOIN names "\n" lines)
file(WRITE "${CPACK_PACKAGE_DIRECTORY}/files.txt" "${lines}\n")
cmake_path(GET root FILENAME staged_name)
if(NOT staged_name STREQUAL CPACK_PACKAGE_FILE_NAME)
  message(FATAL_ERROR "the package is staged in an unexpected place: ${root}")
endif()

# zip, because CMake's own archives keep the times at which the staged copies were made.
find_program(ZIP zip REQUIRED)
set(archive "${CPACK_PACKAGE_DIRECTORY}/${CPACK_PACKAGE_FILE_NAME}.zip")
file(REMOVE "${archive}")
set(ENV{TZ} UTC)
# 1980 is the first year that a zip can tell.
execute_process(COMMAND touch -d 1980-01-02T00:00:00Z ${names}
  WORKING_DIRECTORY "${root}/.." COMMAND_ERROR_IS_FATAL ANY)
execute_process(COMMAND "${ZIP}" -X -q -@ "${archive}"
  INPUT_FILE "${CPACK_PACKAGE_DIRECTORY}/files.txt"
  WORKING_DIRECTORY "${root}/.." COMMAND_ERROR_IS_FATAL ANY)
set(CPACK_EXTERNAL_BUILT_PACKAGES "${archive}")
