# Writes a C++ source that holds the three sources of the report's page as they are.
#
#   cmake -DOUTPUT=FILE -DFOLDER=DIR -P embed.cmake
function(literal name file)
  file(READ ${FOLDER}/${file} text)
  if(text MATCHES "\\)page\"")
    message(FATAL_ERROR "${file} holds the end of a raw string")
  endif()
  set(literals "${literals}const std::string_view ${name} = R\"page(${text})page\";\n" PARENT_SCOPE)
endfunction()

literal(kReportHtml report.html)
literal(kReportStyle report.css)
literal(kReportScript report.js)
file(WRITE ${OUTPUT}
     "#include \"batch/report/report_page.h\"\n\nnamespace plenvorith {\n\n${literals}\n}  // namespace plenvorith\n")
