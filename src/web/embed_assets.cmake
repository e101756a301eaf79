# Writes OUTPUT: a C++ file holding every file in INPUT_DIR as a byte array,
# found by FindAsset under "/" + its name ("/" for index.html).
file(GLOB files RELATIVE ${INPUT_DIR} ${INPUT_DIR}/*)
list(SORT files)
set(arrays "")
set(table "")
set(n 0)
foreach(name ${files})
  file(READ ${INPUT_DIR}/${name} hex HEX)
  string(LENGTH "${hex}" hex_length)
  math(EXPR size "${hex_length} / 2")
  string(REGEX REPLACE "([0-9a-f][0-9a-f])" "'\\\\x\\1'," bytes "${hex}")
  string(APPEND arrays "const char kAsset${n}[] = {${bytes} 0};\n")
  if(name MATCHES "\\.html$")
    set(type "text/html; charset=utf-8")
  elseif(name MATCHES "\\.css$")
    set(type "text/css; charset=utf-8")
  elseif(name MATCHES "\\.js$")
    set(type "text/javascript; charset=utf-8")
  else()
    set(type "application/octet-stream")
  endif()
  set(path "/${name}")
  if(name STREQUAL "index.html")
    set(path "/")
  endif()
  string(APPEND table "    {\"${path}\", \"${type}\", {kAsset${n}, ${size}}},\n")
  math(EXPR n "${n} + 1")
endforeach()
file(WRITE ${OUTPUT}.new "// Generated from src/web/static by embed_assets.cmake.
#include \"web/web_assets.h\"

namespace brindle::web {
namespace {
${arrays}
const Asset kAssets[] = {
${table}};
}  // namespace

const Asset* FindAsset(std::string_view path) {
  for (const Asset& asset : kAssets)
    if (asset.path == path) return &asset;
  return nullptr;
}

}  // namespace brindle::web
")
execute_process(COMMAND ${CMAKE_COMMAND} -E copy_if_different ${OUTPUT}.new ${OUTPUT})
