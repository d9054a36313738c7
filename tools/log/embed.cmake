# Writes embedded.h and embedded.cpp into the build's folder: the page, and what ${messages} says of each
# finding. What is the same as before is left untouched.
set(header "#pragma once\n\n#include <cstdint>\n#include <string_view>\n\nnamespace vok::log {\n\n")
set(code "#include \"embedded.h\"\n\nnamespace vok::log {\n\n")

function(append_text name text)
  set(header "${header}extern const std::string_view ${name};\n" PARENT_SCOPE)
  set(code "${code}const std::string_view ${name} = R\"embedded(${text})embedded\";\n\n" PARENT_SCOPE)
endfunction()

file(READ timeline.html page)
append_text(timelinePage "${page}")
file(READ timeline.css style)
append_text(timelineStyle "${style}")
set(script "")
foreach(part model view paint page input)
  file(READ "timeline_${part}.js" text)
  string(APPEND script "${text}")
endforeach()
append_text(timelineScript "${script}")

# The messages are the last section of their page, behind some words on all of them.
file(READ "${messages}" messages)
foreach(mark "## What the log reader says" "<a id=")
  string(FIND "${messages}" "${mark}" first)
  string(SUBSTRING "${messages}" ${first} -1 messages)
endforeach()
append_text(messagesPage "${messages}")
set(made "${CMAKE_CURRENT_BINARY_DIR}/embedded")
file(WRITE "${made}.new" "${code}}  // namespace vok::log\n")
configure_file("${made}.new" "${made}.cpp" COPYONLY)

# <a id="log-no-window"></a> is FindingId::NoWindow.
string(REGEX MATCHALL "<a id=\"log-[a-z-]+" ids "${messages}")
string(REPLACE "<a id=\"log" "    " ids "${ids}")
string(REPLACE ";" ",\n" ids "${ids}")
foreach(letter a b c d e f g h i j k l m n o p q r s t u v w x y z)
  string(TOUPPER ${letter} capital)
  string(REPLACE "-${letter}" "${capital}" ids "${ids}")
endforeach()
file(CONFIGURE OUTPUT "${made}.h" @ONLY CONTENT "${header}
// In the order of the page, which is that of a job's way.
enum class FindingId : std::uint8_t {
${ids}
};

}  // namespace vok::log
")
