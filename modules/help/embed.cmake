# Writes the help document as a C++ file: cmake -DTEXTS="a.txt;b.txt" -DOUTPUT=rest_help_text.cpp -P embed.cmake
set(code "/* The help document; written by the build from modules/help. */\n#include \"modules/rest_help_document.h\"\n\n")
string(APPEND code "const char restGlobalHelpDocText[] =")
foreach(text IN LISTS TEXTS)
  file(READ ${text} lines)
  string(APPEND code "\nR\"help(${lines})help\"")
endforeach()
file(WRITE ${OUTPUT} "${code};\n")
