// Signature texts taken from files for senders with RandomSig.
#pragma once

#include <string>

#include "core/settings.h"
#include "rewrite/signature.h"

namespace brindle {

// The file's lines, each followed by CR LF. Lines may end in CR LF or LF and
// the last one may lack its line end. Empty when the file is missing or
// unreadable.
std::string ReadSignatureFile(const std::string& path);

// Tries random files of the record's list until one gives text, at most
// 1,001 times; the final CR LF is dropped from a text longer than two
// characters. Empty when no file gave text.
std::string RandomSignature(const SignatureRecord& record, RandomSource& random);

}  // namespace brindle
