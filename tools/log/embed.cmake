# Writes timeline_parts.cpp: cmake -DSOURCE=… -DOUTPUT=… -P embed.cmake
function(append_text name)
  set(text "")
  foreach(file ${ARGN})
    file(READ "${SOURCE}/${file}" part)
    string(APPEND text "${part}")
  endforeach()
  # A literal may not be longer than what every compiler takes; pieces are joined again.
  string(LENGTH "${text}" length)
  set(literals "")
  set(position 0)
  while(position LESS length)
    string(SUBSTRING "${text}" ${position} 8000 piece)
    string(APPEND literals "\n    R\"timeline(${piece})timeline\"")
    math(EXPR position "${position} + 8000")
  endwhile()
  set(code "${code}extern const std::string_view ${name};\nconst std::string_view ${name} =${literals};\n\n"
    PARENT_SCOPE)
endfunction()

set(code "#include \"timeline_parts.h\"\n\nnamespace vok::log {\n\n")
append_text(timelinePage timeline.html)
append_text(timelineStyle timeline.css)
append_text(timelineScript timeline_model.js timeline_view.js timeline_paint.js
  timeline_page.js timeline_input.js)
file(WRITE "${OUTPUT}" "${code}}  // namespace vok::log\n")
