// The pages, styles and scripts of the browser view, built into the program
// (generated from src/web/static/ at build time) so that nothing is read
// from disk or the network to show them.
#pragma once

#include <string_view>

namespace brindle::web {

struct Asset {
  std::string_view path;  // "/", "/app.js", ...
  std::string_view contentType;
  std::string_view body;
};

const Asset* FindAsset(std::string_view path);

}  // namespace brindle::web
