#include "core/settings_file.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "core/log.h"
#include "core/settings_defaults.h"

namespace brindle {
namespace {

std::string ReadTestFile(const std::string& name) {
  std::ifstream in(std::string(BRINDLE_TEST_DATA_DIR) + "/" + name, std::ios::binary);
  std::stringstream ss;
  ss << in.rdbuf();
  return ss.str();
}

Settings Load(std::string_view text, std::vector<TunnelRecord>* sunk = nullptr) {
  Settings s = DefaultSettings("cfg", kLangEnglish);
  LoadSettings(text, s, [&](const TunnelRecord& r, const Settings&) {
    if (sunk) sunk->push_back(r);
  });
  return s;
}

std::string Replace(std::string text, std::string_view from, std::string_view to) {
  for (size_t at = text.find(from); at != std::string::npos; at = text.find(from, at + to.size())) {
    text.replace(at, from.size(), to);
  }
  return text;
}

TEST(SettingsFileTest, FileWithEverySectionRoundTripsByteForByte) {
  const std::string file = ReadTestFile("full.ini");
  ASSERT_FALSE(file.empty());
  std::vector<TunnelRecord> sunk;
  Settings s = Load(file, &sunk);

  EXPECT_EQ(SettingsFileText(s), file);
  EXPECT_EQ(s.intLanguage, kLangGerman);
  EXPECT_EQ(s.strAttachmentPath,
            "D:\\Za\xb3\xb9"
            "czniki");
  EXPECT_EQ(s.strXNewsreader, "Brindle =news= \xb9\xe6");
  EXPECT_EQ(s.strCCAddress, "cc@example.org");
  EXPECT_EQ(s.strBCCAddress, " bcc@example.org ");  // values are not trimmed
  EXPECT_EQ(s.intAFMin, -3);
  EXPECT_EQ(s.strWrotkaNews, "%f napisa\xb3(a):\r\n[not a section]\r\n// not a comment");
  EXPECT_EQ(s.signatures[0].text, "-- \r\nJan \xa3\xf3\x64\xbc");
  EXPECT_EQ(s.signatures[0].SigFile, (std::vector<std::string>{"C:\\sig1.txt", "C:\\sig2.txt"}));
  EXPECT_EQ(s.signatures[1].email, "anon@example.org");
  EXPECT_EQ(s.newsHeaders[1].HeaderName, "X-Second");
  EXPECT_EQ(s.mailHeaders[0].HeaderBody, "body: with colon");

  ASSERT_EQ(sunk.size(), 3u);
  EXPECT_EQ(sunk[0].tType, kTypeNntp);
  EXPECT_TRUE(sunk[0].AutoStart);
  EXPECT_EQ(sunk[1].tType, kTypePop3);
  EXPECT_TRUE(sunk[1].SSL);
  EXPECT_EQ(sunk[2].DestPort, 465);
  EXPECT_EQ(s.tunnels.size(), 3u);

  // The other line ends read the same.
  EXPECT_EQ(SettingsFileText(Load(Replace(file, "\r\n", "\n"))), file);
  EXPECT_EQ(SettingsFileText(Load(Replace(file, "\r\n", "\r"))), file);
}

TEST(SettingsFileTest, DefaultsWriteAFileThatReadsBackUnchanged) {
  std::string first = SettingsFileText(Load(""));
  EXPECT_TRUE(first.starts_with("\r\n[Miscellaneous]\r\nISO=1\r\nMinimizeOE=1\r\n"));
  EXPECT_NE(first.find("\r\nLanguage=EN\r\nAttachmentPath=\r\n"), std::string::npos);
  EXPECT_NE(first.find("[NewsQuoteHeader]\r\nLines=1\r\n\r\nChangeQuoteHeader=0\r\n"),
            std::string::npos);
  EXPECT_EQ(first.find("[Signature]"), std::string::npos);
  EXPECT_EQ(SettingsFileText(Load(first)), first);
}

TEST(SettingsFileTest, SpanishLeavesTheLanguageLineUnfinished) {
  Settings s = Load("Language=sp\r\nAttachmentPath=C:\\att\r\n");
  EXPECT_EQ(s.intLanguage, kLangSpanish);
  std::string text = SettingsFileText(s);
  EXPECT_NE(text.find("\r\nLanguage=AttachmentPath=C:\\att\r\nVerticalQCompression="),
            std::string::npos);

  Settings next = Load(text);
  EXPECT_EQ(next.intLanguage, kLangEnglish);  // the default of this start
  EXPECT_EQ(next.strAttachmentPath, "");
}

TEST(SettingsFileTest, CommentsSurviveOnlyAtTheHead) {
  Settings s = Load("//one\r\n//two\r\nWrapText=70\r\n//late\r\n[Signature]\r\ne-mail=a@b\r\n");
  EXPECT_EQ(s.strIniComment, "//one\r\n//two\r\n");
  std::string text = SettingsFileText(s);
  EXPECT_TRUE(text.starts_with("//one\r\n//two\r\n\r\n[Miscellaneous]\r\n"));
  EXPECT_EQ(text.find("//late"), std::string::npos);
  EXPECT_EQ(Load(text).strIniComment, s.strIniComment);
}

TEST(SettingsFileTest, CountedLinesAreTakenRawWhateverTheyHold) {
  Settings s = Load(
      "[Signature]\r\nUserName=u\r\nSigLines=2\r\n[Backgrounds]\r\n//x=1\r\nRandomSig=1\r\n"
      "[NewsQuoteHeader]\r\nLines=0\r\nChangeQuoteHeader=1\r\n");
  EXPECT_EQ(s.signatures[0].text, "[Backgrounds]\r\n//x=1");
  EXPECT_TRUE(s.signatures[0].RandomSig);  // still in the signature section
  EXPECT_EQ(s.strWrotkaNews, "");
  EXPECT_EQ(s.intWrotkaNews, 1);

  // An empty attribution is written as one empty line and reads back empty.
  std::string text = SettingsFileText(s);
  EXPECT_NE(text.find("[NewsQuoteHeader]\r\nLines=1\r\n\r\nChangeQuoteHeader=1\r\n"),
            std::string::npos);
  Settings again = Load(text);
  EXPECT_EQ(again.strWrotkaNews, "");
  EXPECT_EQ(again.signatures[0].text, s.signatures[0].text);

  // Empty lines inside a text keep their place.
  s.strWrotkaMail = "\r\nmiddle\r\n";
  EXPECT_EQ(Load(SettingsFileText(s)).strWrotkaMail, "\r\nmiddle\r\n");
}

TEST(SettingsFileTest, TunnelSectionsFollowTheirPendingValues) {
  std::vector<TunnelRecord> t;
  log::Capture capture;
  Load(
      "[NNTPServer]\r\nServerName=first\r\nSSL=1\r\n"
      "[POP3Server]\r\nServerName=p1\r\nSSL=1\r\n"
      "[POP3Server]\r\nServerName=p2\r\n"
      "[NNTPServer]\r\nServerName=n\r\n"
      "[SMTPServer]\r\nServerName=s\r\nSSL=0\r\nSrcPort=2525\r\n"
      "[SMTPServer]\r\nServerName=s1\r\nAutoStart=1\r\nDestPort=89655\r\n[junk]\r\n"
      "[POP3Server]\r\nServerName=p3\r\nSSL=1\r\n"
      "[NNTPServer]\r\nServerName=n2\r\n"
      "[SMTPServer]\r\nServerName=s2\r\n",
      &t);
  ASSERT_EQ(t.size(), 9u);
  // Before the first server section the ports are 0; news never reads SSL.
  EXPECT_EQ(t[0].SrcPort, 0);
  EXPECT_FALSE(t[0].SSL);
  // The TLS flag is not reset between sections.
  EXPECT_TRUE(t[1].SSL);
  EXPECT_TRUE(t[2].SSL);
  EXPECT_EQ(t[2].Server, "p2");
  // Ports fall back to the type of the section before.
  EXPECT_EQ(t[3].SrcPort, 110);
  EXPECT_EQ(t[3].DestPort, 110);
  EXPECT_EQ(t[4].SrcPort, 2525);
  EXPECT_EQ(t[4].DestPort, 119);
  EXPECT_FALSE(t[4].SSL);
  // A port that does not fit is refused, not wrapped around; the junk
  // header completes s1 and leaves an empty record that makes no tunnel.
  EXPECT_EQ(t[5].Server, "s1");
  EXPECT_EQ(t[5].DestPort, 25);
  EXPECT_TRUE(t[5].AutoStart);
  EXPECT_EQ(t[5].tType, kTypeSmtp);
  EXPECT_EQ(t[6].Server, "p3");
  EXPECT_TRUE(capture.Contains("line 18: port \"89655\" of \"DestPort\" is not 0 to 65535"));
  EXPECT_TRUE(capture.Contains("line 20: server section without ServerName, no tunnel made"));
  // A news section between two mail sections stays plain, and the flag it
  // did not take still reaches the mail section after it.
  EXPECT_FALSE(t[7].SSL);
  EXPECT_TRUE(t[8].SSL);
}

TEST(SettingsFileTest, StartTlsBelongsToItsOwnSectionAndIsWrittenOnlyWhenSet) {
  std::vector<TunnelRecord> t;
  Settings s = Load(
      "[SMTPServer]\r\nServerName=a\r\nStartTLS=1\r\n"
      "[SMTPServer]\r\nServerName=b\r\n",
      &t);
  ASSERT_EQ(t.size(), 2u);
  EXPECT_TRUE(t[0].StartTLS);
  EXPECT_FALSE(t[1].StartTLS);
  const std::string text = SettingsFileText(s);
  EXPECT_EQ(text.find("StartTLS"), text.rfind("StartTLS"));
  EXPECT_NE(text.find("StartTLS"), std::string::npos);
  EXPECT_TRUE(Load(text).tunnels[0].StartTLS);
  EXPECT_FALSE(Load(text).tunnels[1].StartTLS);
}

TEST(SettingsFileTest, EachTunnelReachesTheSinkBeforeTheRestIsRead) {
  const char* file =
      "[POP3Server]\r\nServerName=a\r\n[Backgrounds]\r\nMessageColor=000000\r\n"
      "[POP3Server]\r\nServerName=b\r\n";
  std::vector<std::string> seen;
  std::atomic<bool> stop{false};
  auto sink = [&](const TunnelRecord& r, const Settings& soFar) {
    seen.push_back(r.Server + "/" + soFar.strTlo);
  };
  Settings s = DefaultSettings("cfg", kLangEnglish);
  EXPECT_TRUE(LoadSettings(file, s, sink, &stop));
  EXPECT_EQ(seen, (std::vector<std::string>{"a/FFFFFF", "b/000000"}));

  // A stop asked for while a tunnel is being made ends the reading there.
  seen.clear();
  s = DefaultSettings("cfg", kLangEnglish);
  auto stopAtFirst = [&](const TunnelRecord& r, const Settings& soFar) {
    sink(r, soFar);
    stop = true;
  };
  EXPECT_FALSE(LoadSettings(file, s, stopAtFirst, &stop));
  EXPECT_EQ(seen, (std::vector<std::string>{"a/FFFFFF"}));
  EXPECT_EQ(s.tunnels.size(), 1u);
  EXPECT_EQ(s.strTlo, "FFFFFF");
}

TEST(SettingsFileTest, OlderSpellingsAndKeysAreAccepted) {
  std::vector<TunnelRecord> t;
  Settings s = Load(
      "CharFiltering=1\r\n[Miscelanous]\r\nCoursorOnTop=0\r\nCharFiltering=7\r\n"
      "QuoteHeader=old attribution\r\nNNTPDefaultServer=news.old\r\n"
      "[Formatting]\r\nBackground=C0C0C0\r\n[miscellaneous]\r\nwraptext=66\r\n",
      &t);
  EXPECT_EQ(s.intCoursorOnTop, 0);
  EXPECT_EQ(s.intCharFiltering, 1);
  EXPECT_EQ(s.intWrap, 66);
  EXPECT_EQ(s.strWrotkaNews, "old attribution");
  EXPECT_EQ(s.strTlo, "C0C0C0");
  ASSERT_EQ(t.size(), 1u);
  EXPECT_EQ(t[0].Server, "news.old");
  EXPECT_EQ(t[0].SrcPort, 119);
  EXPECT_TRUE(t[0].AutoStart);

  std::string text = SettingsFileText(s);
  EXPECT_NE(text.find("\r\nCursorOnTop=0\r\n"), std::string::npos);
  EXPECT_EQ(text.find("Coursor"), std::string::npos);
  EXPECT_NE(text.find("[NNTPServer]\r\nServerName=news.old\r\nSrcPort=119\r\nDestPort=119\r\n"
                      "AutoStart= 1 \r\nSSL= 0 \r\n"),
            std::string::npos);
}

TEST(SettingsFileTest, NumbersAreTheLeadingDecimalRoundedHalfToEven) {
  Settings s = Load(
      "WrapText=2.5\r\nAFMin=3.5\r\nAFPercentage= 12abc\r\nQuoteFix=abc\r\nTrayIcon=-0.5\r\n"
      "ISO= 1 \r\nPreview=2\r\nStripReferences=1e3\r\n[Signature]\r\ne-mail=x\r\n"
      "Distance=254.6\r\nRandomSig=yes\r\n[POP3Server]\r\nServerName=p\r\nSrcPort= 1110 \r\n"
      "SSL=0.2\r\n");
  EXPECT_EQ(s.intWrap, 2);
  EXPECT_EQ(s.intAFMin, 4);
  EXPECT_EQ(s.intAFPercentage, 12);
  EXPECT_EQ(s.intQuoteFix, 0);
  EXPECT_EQ(s.intTrayIcon, 0);
  EXPECT_EQ(s.intISO, 1);
  EXPECT_EQ(s.intPreview, 0);
  EXPECT_EQ(s.intStripRef, 1000);
  EXPECT_EQ(s.signatures[0].Distance, 255);
  EXPECT_FALSE(s.signatures[0].RandomSig);
  EXPECT_EQ(s.tunnels.at(0).SrcPort, 1110);
  EXPECT_TRUE(s.tunnels.at(0).SSL);
}

TEST(SettingsFileTest, LineEndsInsideValuesCannotBreakTheFile) {
  Settings s = DefaultSettings("cfg", kLangEnglish);
  s.strXMailer = "mailer\n[Signature]";
  s.strWrotkaNews = "one\ntwo\rthree\r\n";
  s.signatures[0].email = "a@b";
  s.signatures[0].text = "-- \nWrapText=1";
  log::Capture capture;
  Settings back = Load(SettingsFileText(s));
  EXPECT_EQ(back.strXMailer, "mailer");
  EXPECT_TRUE(capture.Contains("\"XMailer\" cut"));
  EXPECT_EQ(back.strWrotkaNews, "one\r\ntwo\r\nthree\r\n");
  EXPECT_EQ(back.signatures[0].text, "-- \r\nWrapText=1");
  EXPECT_EQ(back.intWrap, 76);
  EXPECT_TRUE(back.signatures[1].IsEmpty());
}

TEST(SettingsFileTest, EmptyEntriesAreDroppedAndGapsClosed) {
  Settings s = DefaultSettings("cfg", kLangEnglish);
  s.signatures[3].email = "third@example.org";
  s.signatures[5].text = "text without a sender";
  s.newsHeaders[7].HeaderName = "X-Late";
  s.newsHeaders[8].HeaderBody = "body without a name";
  s.signatures[3].SigFile = {"", "a.txt"};
  Settings back = Load(SettingsFileText(s));
  EXPECT_EQ(back.signatures[0].email, "third@example.org");
  EXPECT_EQ(back.signatures[0].SigFile, std::vector<std::string>{"a.txt"});
  EXPECT_TRUE(back.signatures[1].IsEmpty());
  EXPECT_EQ(back.signatures[1].text, "");
  EXPECT_EQ(back.newsHeaders[0].HeaderName, "X-Late");
  EXPECT_EQ(back.newsHeaders[1].HeaderBody, "");
}

TEST(SettingsFileTest, DamagedLinesAreSkippedAndLogged) {
  log::Capture capture;
  Settings s = Load(
      "no equals sign\r\n\r\nWrapText=40000\r\nAFMin=60\r\n[Signature\r\ne-mail=kept@misc\r\n"
      "[\r\n[]\r\n[Signature]\r\nDistance=256\r\nDistance=9\r\nDistance=-1\r\n");
  EXPECT_EQ(s.intWrap, 76);  // out of range: the default stays
  EXPECT_EQ(s.intAFMin, 60);
  EXPECT_EQ(s.signatures[0].Distance, 9);
  EXPECT_TRUE(s.signatures[1].IsEmpty());
  EXPECT_TRUE(capture.Contains("line 1: line without \"=\""));
  EXPECT_FALSE(capture.Contains("line 2:"));  // an empty line is no damage
  EXPECT_TRUE(capture.Contains("line 3: value of \"WrapText\" out of range"));
  EXPECT_TRUE(capture.Contains("line 5: section header without closing bracket"));
  EXPECT_TRUE(capture.Contains("unknown section \"Signatur\""));
  EXPECT_TRUE(capture.Contains("line 10: value of \"Distance\" out of range"));
  EXPECT_TRUE(capture.Contains("line 12: value of \"Distance\" out of range"));
}

TEST(SettingsFileTest, AForeignFileCannotFloodTheLog) {
  std::string junk;
  for (int i = 0; i < 5000; ++i) junk += "garbage line\n[junk]\n";
  log::Capture capture;
  Settings s = Load(junk + "WrapText=33\n");
  EXPECT_EQ(s.intWrap, 33);
  std::string text = capture.Text();
  EXPECT_LE(std::count(text.begin(), text.end(), '\n'), 50);
  EXPECT_TRUE(capture.Contains("further problems in this file are not logged"));
}

TEST(SettingsFileTest, TablesBeyondTheirSizeSkipTheirSections) {
  std::string file;
  for (int i = 0; i < kSignatureCount + 1; ++i) {
    file += "[Signature]\r\ne-mail=s" + std::to_string(i) + "\r\nSigLines=1\r\nWrapText=10\r\n";
  }
  for (int i = 0; i < kCustomHeaderCount + 1; ++i) {
    file += "[CustomHeader]\r\nHeaderName=X-" + std::to_string(i) + "\r\n";
  }
  file += "[Backgrounds]\r\nMessageImage=after\r\n";
  log::Capture capture;
  Settings s = Load(file);
  EXPECT_EQ(s.signatures[100].email, "s100");
  EXPECT_EQ(s.signatures[100].text, "WrapText=10");
  EXPECT_EQ(s.intWrap, 76);  // the skipped signature's text stays text
  EXPECT_EQ(s.newsHeaders[49].HeaderName, "X-49");
  EXPECT_EQ(s.strMsgBgPict, "after");
  EXPECT_TRUE(capture.Contains("more than 101 signatures"));
  EXPECT_TRUE(capture.Contains("more than 50 news custom headers"));
}

TEST(SettingsFileTest, CountsPastTheEndStopThere) {
  log::Capture capture;
  Settings s = Load("[MailQuoteHeader]\r\nLines=1e400\r\na\r\nb");
  EXPECT_EQ(s.strWrotkaMail, "a\r\nb");
  s = Load("[Signature]\r\ne-mail=x\r\nSigLines=99999999999\r\n");
  EXPECT_EQ(s.signatures[0].text, "");
  EXPECT_TRUE(capture.Contains("the file ends before"));
}

TEST(SettingsFileTest, AFailingTunnelSinkDoesNotStopTheLoad) {
  log::Capture capture;
  Settings s = DefaultSettings("cfg", kLangEnglish);
  LoadSettings("[SMTPServer]\r\nServerName=bad\r\n[SMTPServer]\r\nServerName=good\r\n", s,
               [](const TunnelRecord& r, const Settings&) {
                 if (r.Server == "bad") throw std::runtime_error("port in use");
               });
  ASSERT_EQ(s.tunnels.size(), 2u);
  EXPECT_TRUE(capture.Contains("port in use"));
}

TEST(SettingsFileTest, CountLinesCountsCrLfPairs) {
  EXPECT_EQ(CountLines(""), 1);
  EXPECT_EQ(CountLines("a\r\nb"), 2);
  EXPECT_EQ(CountLines("\r\n\r\n"), 3);
  EXPECT_EQ(CountLines("a\rb\nc"), 1);
  EXPECT_EQ(CountLines("\r\r\n\n"), 2);
}

}  // namespace
}  // namespace brindle
