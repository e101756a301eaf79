// Which steps run on a finished message, and what the user sees of a piece.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "proxy/message_pipeline.h"
#include "proxy/proxy_test_support.h"
#include "proxy/transfer_display.h"

namespace brindle::proxytest {
namespace {

using ::testing::ElementsAre;

TEST(MessagePipelineTest, UuencodeCheckDependsOnTheLastPieceNotTheArticle) {
  Settings s;
  s.intBeginFilter = 1;
  s.intCharFiltering = 2;  // "delete" is never applied to downloads
  const std::string article(100000, 'x');
  RecordingSteps steps;
  FilterNewsArticle(article + "\r\n.\r\n", 29999, s, steps);
  EXPECT_THAT(steps.calls, ElementsAre("FilterBegin", "FixBoundary"));
  steps.calls.clear();
  FilterNewsArticle("short\r\n.\r\n", 30000, s, steps);
  EXPECT_THAT(steps.calls, ElementsAre("FixBoundary"));
  steps.calls.clear();
  s.intBeginFilter = 0;
  s.intCharFiltering = 1;
  FilterNewsArticle("short\r\n.\r\n", 5, s, steps);
  EXPECT_THAT(steps.calls, ElementsAre("FilterChars1", "FixBoundary"));
}

// A failing step changes nothing itself; what the steps before it did
// stays. A failed run counts nothing, and a step that left the text as it
// was is not counted.
TEST(MessagePipelineTest, MailFilterAndFailureKeepTheOriginalAndTheCounts) {
  Settings s;
  RecordingSteps steps;
  EXPECT_EQ(FilterMailMessage("m\r\n.\r\n", s, steps), "m{FixBoundary}\r\n.\r\n");
  steps.failIn = "ChangeNewsHeaders";
  EXPECT_EQ(RewriteNewsArticle("a\r\n.\r\n", s, steps),
            "a{AppendSignature}{CutReferences950}\r\n.\r\n");
  EXPECT_EQ(steps.counts.signaturesAppended, 0u);

  MessageSteps real;
  s.intXNewsreader = 1;
  s.strXNewsreader = "n";
  RewriteNewsArticle("Subject: a\r\nX-Newsreader: old\r\n\r\nb\r\n.\r\n", s, real);
  EXPECT_EQ(real.counts.headersReplaced, 1u);
  EXPECT_EQ(real.counts.referencesShortened + real.counts.customHeadersInserted, 0u);
}

// What the display shows of a client stream, piece after piece.
std::string Shown(const std::vector<std::string>& pieces, bool inAuthExchange = false) {
  CredentialMask mask;
  std::string shown;
  for (const std::string& piece : pieces) shown += mask.Mask(piece, inAuthExchange);
  return shown;
}

TEST(MessagePipelineTest, RecordNamesTheStepsThatChangedTheText) {
  Settings s;
  s.intCharFiltering = 1;
  s.intAsianFilter = 1;
  const std::string signedPart = "Content-Type: multipart/signed; boundary=\"b\"\r\n";
  MessageSteps steps;  // counts of its own
  DownloadFiltering article;
  FilterNewsArticle(
      "220 1\r\nFrom: a@b\r\n" + signedPart + "\r\nx\x01y\r\nbegin 644 f\r\nM\r\n.\r\n", 5, s,
      steps, &article);
  EXPECT_EQ(article.changes.Names(), "control characters, begin lines, multipart relabelled");
  EXPECT_EQ(article.sender, "a@b");
  DownloadFiltering intact;  // a well-formed block stays as it is
  FilterNewsArticle("220 1\r\n\r\nbegin 644 f\r\nM\r\n`\r\nend\r\n.\r\n", 5, s,
                    DefaultMessageSteps(), &intact);
  EXPECT_FALSE(intact.changes.Any());

  const SpammerList list = SpammerList::Parse("a@b\n");
  DownloadFiltering mail(&list);
  const std::string marked =
      FilterMailMessage("+OK\r\nFrom: a@b\r\nSubject: \xB1\xB2\r\n\r\n.\r\n", s, steps, &mail);
  EXPECT_EQ(mail.changes.Names(), "subject marked, spammer list");
  EXPECT_NE(marked.find("Subject: [SPAM] \xB1"), std::string::npos) << marked;  // marked once

  RecordingSteps failing;
  failing.failIn = "FixBoundary";
  DownloadFiltering failed(&list);
  EXPECT_EQ(FilterMailMessage("+OK\r\nFrom: a@b\r\n\r\n.\r\n", s, failing, &failed),
            "+OK\r\nFrom: a@b\r\n{MarkAsianSpam90/10}\r\n.\r\n");
  EXPECT_FALSE(failed.changes.Any());

  // The status page counts the same steps, once per message that went through.
  EXPECT_EQ(steps.counts.controlCharsBlanked, 1u);
  EXPECT_EQ(steps.counts.multipartsRelabelled, 1u);
  EXPECT_EQ(steps.counts.subjectsMarked + steps.counts.sendersListed, 2u);
  EXPECT_EQ(failing.counts.multipartsRelabelled + failing.counts.sendersListed, 0u);
}

TEST(TransferDisplayTest, CredentialsAreMaskedOnEveryLineOfAPiece) {
  EXPECT_EQ(Shown({"authinfo pass x y z\r\n"}), "authinfo pass ********");
  EXPECT_EQ(Shown({"USER joe\r\nPASS pw\r\nSTAT\r\n"}), "USER joe\r\nPASS ********\r\nSTAT\r\n");
  EXPECT_EQ(Shown({"EHLO x\r\nAUTH PLAIN AGpvZQ==\r\n"}), "EHLO x\r\nAUTH PLAIN ********\r\n");
  EXPECT_EQ(Shown({"AUTH LOGIN\r\n"}), "AUTH LOGIN\r\n");
  EXPECT_EQ(Shown({"am9l\r\n"}, true), "********\r\n");
  EXPECT_EQ(Shown({std::string(5000, 'a')}).size(), TransferDisplay::kClientPieceLimit);
}

TEST(TransferDisplayTest, ACredentialLineSplitAnywhereNeverShowsItsSecret) {
  const std::vector<std::pair<std::string, std::string>> lines = {
      {"AUTHINFO PASS s3cret\r\n", "s3cret"}, {"AUTHINFO USER s3cret\r\n", "s3cret"},
      {"PASS s3cret\r\n", "s3cret"},          {"pass s3cret\r\n", "s3cret"},
      {"AUTH PLAIN s3cret\r\n", "s3cret"},
  };
  for (const auto& [line, secret] : lines) {
    const std::string whole = Shown({"NOOP\r\n" + line});
    for (size_t a = 1; a < line.size(); ++a) {
      for (size_t b = a; b < line.size(); ++b) {
        SCOPED_TRACE(line + " split at " + std::to_string(a) + "," + std::to_string(b));
        CredentialMask mask;
        std::string shown = mask.Mask("NOOP\r\n" + line.substr(0, a), false);
        for (const std::string& piece :
             std::vector<std::string>{line.substr(a, b - a), line.substr(b)}) {
          const std::string part = mask.Mask(piece, false);
          EXPECT_EQ(part.find(secret.substr(1)), std::string::npos) << part;
          shown += part;
        }
        EXPECT_EQ(shown.find(secret), std::string::npos);
        EXPECT_EQ(shown, whole);
      }
    }
  }
  // The display off: the line state is still followed, so a secret line
  // that began unshown stays hidden once the display is on.
  CredentialMask mask;
  mask.Mask("USER joe\r\nPAS", false, false);
  EXPECT_EQ(mask.Mask("S s3cret\r\nSTAT\r\n", false), "S ********\r\nSTAT\r\n");
}

}  // namespace
}  // namespace brindle::proxytest
