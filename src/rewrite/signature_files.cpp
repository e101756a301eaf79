#include "rewrite/signature_files.h"

#include <sys/stat.h>

#include <cstdio>
#include <string_view>

namespace brindle {
namespace {

constexpr int kAttempts = 1001;

bool IsRegularFile(const std::string& path) {
  struct stat info {};
  return !path.empty() && ::stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

std::string ReadWholeFile(const std::string& path) {
  std::string content;
  std::FILE* file = std::fopen(path.c_str(), "rb");
  if (!file) return content;
  char buffer[8192];
  size_t got;
  while ((got = std::fread(buffer, 1, sizeof buffer, file)) > 0) content.append(buffer, got);
  std::fclose(file);
  return content;
}

}  // namespace

std::string ReadSignatureFile(const std::string& path) {
  std::string signature;
  if (!IsRegularFile(path)) return signature;
  const std::string content = ReadWholeFile(path);
  std::string_view rest(content);
  while (!rest.empty()) {
    size_t lineFeed = rest.find('\n');
    std::string_view line = rest.substr(0, lineFeed);
    rest.remove_prefix(lineFeed == std::string_view::npos ? rest.size() : lineFeed + 1);
    if (!line.empty() && line.back() == '\r') line.remove_suffix(1);
    signature.append(line);
    signature += "\r\n";
  }
  return signature;
}

std::string RandomSignature(const SignatureRecord& record, RandomSource& random) {
  std::string signature;
  if (record.SigFile.empty()) return signature;
  const int upper = static_cast<int>(record.SigFile.size()) - 1;
  // Picks of empty list slots are retried, but only up to twice the upper
  // bound over the whole call: the count is shared by all attempts, so once
  // it is used up every attempt takes whatever one pick gives.
  int picks = 0;
  for (int attempt = 0; attempt < kAttempts && signature.empty(); ++attempt) {
    const std::string* path;
    do {
      path = &record.SigFile[RandomIndex(upper, random)];
      ++picks;
    } while (path->empty() && picks <= 2 * upper);
    signature = ReadSignatureFile(*path);
  }
  if (signature.size() > 2) signature.resize(signature.size() - 2);
  return signature;
}

}  // namespace brindle
