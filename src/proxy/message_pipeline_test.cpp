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

// Counts follow what the message went out as: a failed run counts nothing,
// and a step that left the text as it was is not counted.
TEST(MessagePipelineTest, MailFilterAndFailureKeepTheOriginalAndTheCounts) {
  Settings s;
  RecordingSteps steps;
  EXPECT_EQ(FilterMailMessage("m\r\n.\r\n", s, steps), "m{FixBoundary}\r\n.\r\n");
  steps.failIn = "ChangeNewsHeaders";  // a later step fails: nothing of the earlier ones stays
  EXPECT_EQ(RewriteNewsArticle("a\r\n.\r\n", s, steps), "a\r\n.\r\n");
  EXPECT_EQ(steps.counts.signaturesAppended, 0u);

  MessageSteps real;
  s.intXNewsreader = 1;
  s.strXNewsreader = "n";
  RewriteNewsArticle("Subject: a\r\nX-Newsreader: old\r\n\r\nb\r\n.\r\n", s, real);
  EXPECT_EQ(real.counts.headersReplaced, 1u);
  EXPECT_EQ(real.counts.referencesShortened + real.counts.customHeadersInserted, 0u);
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
            "+OK\r\nFrom: a@b\r\n\r\n.\r\n");
  EXPECT_FALSE(failed.changes.Any());

  // The status page counts the same steps, once per message that went through.
  EXPECT_EQ(steps.counts.controlCharsBlanked, 1u);
  EXPECT_EQ(steps.counts.multipartsRelabelled, 1u);
  EXPECT_EQ(steps.counts.subjectsMarked + steps.counts.sendersListed, 2u);
  EXPECT_EQ(failing.counts.multipartsRelabelled + failing.counts.sendersListed, 0u);
}

TEST(TransferDisplayTest, CredentialsAreMaskedOnEveryLineOfAPiece) {
  EXPECT_EQ(MaskClientPiece("authinfo pass x y z\r\n", false), "authinfo pass ********");
  EXPECT_EQ(MaskClientPiece("USER joe\r\nPASS pw\r\nSTAT\r\n", false),
            "USER joe\r\nPASS ********\r\nSTAT\r\n");
  EXPECT_EQ(MaskClientPiece("EHLO x\r\nAUTH PLAIN AGpvZQ==\r\n", false),
            "EHLO x\r\nAUTH PLAIN ********\r\n");
  EXPECT_EQ(MaskClientPiece("AUTH LOGIN\r\n", false), "AUTH LOGIN\r\n");
  EXPECT_EQ(MaskClientPiece("am9l\r\n", true), "********\r\n");
  EXPECT_EQ(MaskClientPiece(std::string(5000, 'a'), false).size(),
            TransferDisplay::kClientPieceLimit);
}

}  // namespace
}  // namespace brindle::proxytest
