# make.cmake: one page of the handbook, from Markdown to HTML (cmake -P, with CMARK, SOURCE, FRAME,
# VERSION and TARGET set). A heading below `<a id="name"></a>` gets that name: by it F1 finds the
# chapter, whatever becomes of its words.
execute_process(COMMAND "${CMARK}" --unsafe -e table "${SOURCE}" OUTPUT_VARIABLE BODY
  COMMAND_ERROR_IS_FATAL ANY)
string(REGEX REPLACE "<p><a id=\"([a-z-]+)\"></a></p>\n<h([1-6])>"
  "<h\\2 id=\"\\1\"><a name=\"\\1\"></a>" BODY "${BODY}")
if(BODY MATCHES "<p><a id=\"([a-z-]+)\">")
  message(FATAL_ERROR "${SOURCE}: no heading follows the name ${CMAKE_MATCH_1}")
endif()
string(REGEX REPLACE "href=\"([a-z-]+)\\.md" "href=\"\\1.html" BODY "${BODY}")
string(REGEX MATCH "<h1>([^<]*)</h1>" ignored "${BODY}")
set(TITLE "${CMAKE_MATCH_1}")

# The contents: the chapters, and what is in them. Semicolons would part a list of CMake's.
string(REPLACE ";" "&#59;" searched "${BODY}")
string(REGEX MATCHALL "<h[23] id=\"[a-z-]+\"><a name=\"[a-z-]+\"></a>[^\n]*</h[23]>" headings "${searched}")
set(CONTENTS "")
foreach(heading IN LISTS headings)
  string(REGEX MATCH "<h([23]) id=\"([a-z-]+)\"><a name=\"[a-z-]+\"></a>(.*)</h[23]>" ignored "${heading}")
  string(APPEND CONTENTS
    "<p class=\"level${CMAKE_MATCH_1}\"><a href=\"#${CMAKE_MATCH_2}\">${CMAKE_MATCH_3}</a></p>\n")
endforeach()
string(REPLACE "</h1>\n" "</h1>\n${CONTENTS}" BODY "${BODY}")
string(REPLACE "&#59;" ";" BODY "${BODY}")
configure_file("${FRAME}" "${TARGET}" @ONLY)
