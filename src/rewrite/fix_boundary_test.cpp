#include <gtest/gtest.h>

#include <string>

#include "rewrite/incoming_filters.h"

namespace brindle {
namespace {

// A signed article as a client posts it: the boundary in a folded parameter
// line, the signed content itself multipart, then the signature part.
std::string SignedArticle(const std::string& top, const std::string& inner) {
  return "220 77 <sig1@news.example.org> article\r\n"
         "From: \"Ma\xb3gorzata\" <mg@example.pl>\r\n"
         "Subject: podpisany\r\n"
         "MIME-Version: 1.0\r\n"
         "Content-Type: " +
         top +
         ";\r\n"
         "\tprotocol=\"application/x-pkcs7-signature\";\r\n"
         "\tmicalg=SHA1;\r\n"
         "\tboundary=\"----=_NextPart_000_0007_01C76512.4E2B1A40\"\r\n"
         "\r\n"
         "This is a multi-part message in MIME format.\r\n"
         "\r\n"
         "------=_NextPart_000_0007_01C76512.4E2B1A40\r\n"
         "Content-Type: " +
         inner +
         ";\r\n"
         "\tboundary=\"----=_NextPart_001_0008_01C76512.4E2B1A40\"\r\n"
         "\r\n"
         "------=_NextPart_001_0008_01C76512.4E2B1A40\r\n"
         "Content-Type: text/plain;\r\n"
         "\tcharset=\"iso-8859-2\"\r\n"
         "\r\n"
         "Tre\x9c\xe6 podpisana.\r\n"
         "------=_NextPart_001_0008_01C76512.4E2B1A40--\r\n"
         "\r\n"
         "------=_NextPart_000_0007_01C76512.4E2B1A40\r\n"
         "Content-Type: multipart/signed; name=\"smime.p7s\"\r\n"
         "\r\n"
         "MIAGCSqGSIb3DQEHAqCAMIACAQExCzAJBgUrDgMCGgUAMIAGCSqGSIb3DQEHAQAAoIIEAzCC\r\n"
         "------=_NextPart_000_0007_01C76512.4E2B1A40--\r\n"
         "\r\n"
         ".\r\n";
}

TEST(FixBoundary, SignedArticleWithFoldedBoundary) {
  // The header line and the first part header change; the signature part's
  // header further on keeps its word.
  EXPECT_EQ(FixBoundary(SignedArticle("multipart/signed", "multipart/signed")),
            SignedArticle("multipart/mixed", "multipart/mixed"));
  EXPECT_EQ(FixBoundary(SignedArticle("multipart/mixed", "multipart/signed")),
            SignedArticle("multipart/mixed", "multipart/mixed"));
  const std::string plain = SignedArticle("multipart/alternative", "text/html");
  EXPECT_EQ(FixBoundary(std::string(plain)), plain);
}

struct BoundaryCase {
  const char* name;
  std::string in;
  std::string out;
};

void PrintTo(const BoundaryCase& c, std::ostream* os) {
  *os << c.name;
}

class FixBoundarySteps : public testing::TestWithParam<BoundaryCase> {};

TEST_P(FixBoundarySteps, EndsWithTheTextAsChangedSoFar) {
  EXPECT_EQ(FixBoundary(std::string(GetParam().in)), GetParam().out);
}

const std::string kSigned = "Content-Type: multipart/signed; boundary=";
const std::string kMixed = "Content-Type: multipart/mixed; boundary=";
const std::string kPartSigned = "Content-Type: multipart/signed\r\n";
const std::string kPartMixed = "Content-Type: multipart/mixed\r\n";

INSTANTIATE_TEST_SUITE_P(
    Cases, FixBoundarySteps,
    testing::Values(
        BoundaryCase{"NoContentType", "Content-type: multipart/signed\r\n",
                     "Content-type: multipart/signed\r\n"},
        BoundaryCase{"HeaderLineWithoutEnd", "Content-Type: multipart/signed",
                     "Content-Type: multipart/signed"},
        BoundaryCase{"EveryWordInTheLine",
                     "Content-Type: multipart/signed multipart/signedmultipart/signed\r\n"
                     "multipart/signed\r\n",
                     "Content-Type: multipart/mixed multipart/mixedmultipart/mixed\r\n"
                     "multipart/signed\r\n"},
        BoundaryCase{"NoBoundaryParameter", kSigned + "\r\n\r\n--x\r\n" + kPartSigned,
                     kMixed + "\r\n\r\n--x\r\n" + kPartSigned},
        BoundaryCase{"MissingClosingQuote", kSigned + "\"x\r\n\r\n--x\r\n" + kPartSigned,
                     kMixed + "\"x\r\n\r\n--x\r\n" + kPartSigned},
        BoundaryCase{"BoundaryNeverUsed", kSigned + "\"x\"\r\n\r\nbody\r\n" + kPartSigned,
                     kMixed + "\"x\"\r\n\r\nbody\r\n" + kPartSigned},
        BoundaryCase{"NoPartHeader", kSigned + "\"x\"\r\n\r\n--x\r\ntext\r\n",
                     kMixed + "\"x\"\r\n\r\n--x\r\ntext\r\n"},
        BoundaryCase{"PartHeaderWithoutEnd",
                     kSigned + "\"x\"\r\n\r\n--x\r\nContent-Type: multipart/signed",
                     kMixed + "\"x\"\r\n\r\n--x\r\nContent-Type: multipart/signed"},
        // The search starts at the closing quote, so a value right behind it counts.
        BoundaryCase{"SearchStartsAtClosingQuote",
                     kSigned + "\"q\"q\r\n" + kPartSigned + "\r\n--q\r\n" + kPartSigned,
                     kMixed + "\"q\"q\r\n" + kPartMixed + "\r\n--q\r\n" + kPartSigned},
        // The value inside the quotes is not its own first occurrence.
        BoundaryCase{"ValueItselfSkipped",
                     kSigned + "\"q\"\r\nX-A: " + kPartSigned + "\r\n--q\r\n" + kPartSigned,
                     kMixed + "\"q\"\r\nX-A: " + kPartSigned + "\r\n--q\r\n" + kPartMixed},
        // The start counts from "boundary=", not from the opening quote: with
        // a blank before the quote it lands on a one-letter value itself.
        BoundaryCase{"StartCountsFromParameterName",
                     kSigned + " \"q\"\r\nX-A: " + kPartSigned + "\r\n--q\r\n" + kPartSigned,
                     kMixed + " \"q\"\r\nX-A: " + kPartMixed + "\r\n--q\r\n" + kPartSigned},
        // The value is whatever lies between the next two quotes.
        BoundaryCase{"QuotesOnLaterLine",
                     kSigned + "b1;\r\n\tx=\"b1\"\r\n\r\n--b1\r\n" + kPartSigned,
                     kMixed + "b1;\r\n\tx=\"b1\"\r\n\r\n--b1\r\n" + kPartMixed}),
    [](const testing::TestParamInfo<BoundaryCase>& info) { return info.param.name; });

}  // namespace
}  // namespace brindle
