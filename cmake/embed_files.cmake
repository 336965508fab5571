# Run by cmake -P: writes a C++ source that contains the files of a folder as pbhost::live::pageFiles.
#   FOLDER: the folder; OUTPUT: the source to write
file(GLOB names RELATIVE ${FOLDER} ${FOLDER}/*)
list(SORT names)
set(arrays "")
set(rows "")
set(number 0)
foreach(name ${names})
  file(READ ${FOLDER}/${name} hex HEX)
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  string(APPEND arrays "constexpr char file${number}[] = {${bytes}'\\0'};\n")
  string(APPEND rows "    {\"${name}\", {file${number}, sizeof file${number} - 1}},\n")
  math(EXPR number "${number} + 1")
endforeach()
file(WRITE ${OUTPUT} "// Generated from ${FOLDER}.
#include \"pbhost/live/server/page_files.h\"

namespace {
${arrays}
constexpr pbhost::live::PageFile files[] = {
${rows}};
} // namespace

std::span<const pbhost::live::PageFile> pbhost::live::pageFiles() {
    return files;
}
")
