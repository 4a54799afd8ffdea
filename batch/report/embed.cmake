# Writes a C++ source that holds the three sources of the report's page. The browser is told by their
# hashes that it may run these and nothing else that stands in the page.
#
#   cmake -DOUTPUT=FILE -DFOLDER=DIR -P embed.cmake
cmake_minimum_required(VERSION 3.25)

# The SHA-256 of a text in base64, as Content-Security-Policy takes it.
function(hash_of text result)
  string(SHA256 hex "${text}")
  set(letters ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/)
  set(base64 "")
  # Eleven groups of three bytes, of which the last one has only two.
  foreach(place RANGE 0 60 6)
    string(SUBSTRING ${hex}00 ${place} 6 group)
    foreach(shift 18 12 6 0)
      math(EXPR digit "(0x${group} >> ${shift}) & 63")
      string(SUBSTRING ${letters} ${digit} 1 letter)
      string(APPEND base64 ${letter})
    endforeach()
  endforeach()
  string(REGEX REPLACE ".$" "=" base64 ${base64})
  set(${result} ${base64} PARENT_SCOPE)
endfunction()

function(literal name text)
  if(text MATCHES "\\)page\"")
    message(FATAL_ERROR "${name} holds the end of a raw string")
  endif()
  set(literals "${literals}const std::string_view ${name} = R\"page(${text})page\";\n" PARENT_SCOPE)
endfunction()

file(READ ${FOLDER}/report.html html)
file(READ ${FOLDER}/report.css style)
file(READ ${FOLDER}/report.js script)
hash_of("${style}" style_hash)
hash_of("${script}" script_hash)
string(REPLACE @STYLE_HASH@ ${style_hash} html "${html}")
string(REPLACE @SCRIPT_HASH@ ${script_hash} html "${html}")
literal(kReportHtml "${html}")
literal(kReportStyle "${style}")
literal(kReportScript "${script}")
file(WRITE ${OUTPUT}
     "#include \"batch/report/report_page.h\"\n\nnamespace plenvorith {\n\n${literals}\n}  // namespace plenvorith\n")
