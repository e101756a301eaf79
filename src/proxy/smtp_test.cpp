// SMTP through a tunnel: the mail text rewritten once, the greeting
// replaced, and the replies that steer the dialogue.
#include "core/log.h"
#include "proxy/host_name.h"
#include "proxy/proxy_fixture.h"

namespace brindle::proxytest {
namespace {

using ::testing::ElementsAre;
using ::testing::IsEmpty;

const std::string kGreeting = "220 smtp ready\r\n";
const std::string kMail = "From: a@b\r\nX-Mailer: OE\r\n\r\nhello\r\n.\r\n";

class SmtpTest : public ProxyFixture {
 protected:
  void Begin(int16_t fqdn) {
    Settings s;
    s.intFQDN = fqdn;
    MakeProxy(s);
    d_ = Open(Tunnel(kTypeSmtp, server_), server_, kGreeting);
  }
  ScriptedServer server_{io_, kGreeting};
  Dialogue d_;
};

TEST_F(SmtpTest, PipelinedMailIsRewrittenOnceAfterItsGoAhead) {
  Begin(0);
  Feed(d_.client, "EHLO pc\r\n");
  Feed(d_.server, "250-smtp\r\n250 PIPELINING\r\n");
  const std::string commands = "MAIL FROM:<a@b>\r\nRCPT TO:<c@d>\r\nDATA\r\n";
  Feed(d_.client, commands);
  // Replies one by one: the first two must not be taken for DATA's answer.
  Feed(d_.server, "250 ok\r\n");
  Feed(d_.server, "250 ok\r\n");
  Feed(d_.server, "354 go ahead\r\n");
  Feed(d_.client, kMail.substr(0, 15));
  Feed(d_.client, kMail.substr(15));
  const std::string rewritten =
      kMail.substr(0, kMail.size() - 5) + "{ChangeMailHeaders}{InsertMailCustomHeaders}\r\n.\r\n";
  ASSERT_TRUE(Receives(d_.server, "EHLO pc\r\n" + commands + rewritten));
  EXPECT_THAT(steps_.calls, ElementsAre("ChangeMailHeaders", "InsertMailCustomHeaders"));
}

TEST_F(SmtpTest, RefusedDataLeavesCollectingSoTheNextCommandIsRelayed) {
  Begin(0);
  Feed(d_.client, "DATA\r\n");
  Feed(d_.server, "554 no valid recipients\r\n");
  Feed(d_.client, "RSET\r\n");
  EXPECT_TRUE(Receives(d_.server, "DATA\r\nRSET\r\n"));
  EXPECT_THAT(steps_.calls, IsEmpty());
}

TEST_F(SmtpTest, FirstCommandBecomesEhloWithTheFullHostName) {
  Begin(1);
  ASSERT_FALSE(HostFullName().empty());
  Feed(d_.client, "HELO whatever\r\n");
  Feed(d_.server, "250 hello\r\n");
  Feed(d_.client, "HELO again\r\n");  // only the first command is replaced
  // A host name without a domain gives way to the connection's own address.
  EXPECT_TRUE(Receives(d_.server,
                       "EHLO " + EhloName(HostFullName(), "[127.0.0.1]") + "\r\nHELO again\r\n"));
}

TEST_F(SmtpTest, AuthExchangeNeverShowsOrLogsCredentials) {
  Begin(0);
  log::Capture log;
  Feed(d_.client, "AUTH PLAIN AGpvZQBzZWNyZXQ=\r\n", "AUTH PLAIN ********\r\n");
  Feed(d_.server, "235 ok\r\n");
  Feed(d_.client, "AUTH LOGIN\r\n");
  Feed(d_.server, "334 VXNlcm5hbWU6\r\n");
  Feed(d_.client, "am9l\r\n", "********\r\n");
  Feed(d_.server, "334 UGFzc3dvcmQ6\r\n");
  Feed(d_.client, "c2VjcmV0\r\n", "********\r\n");
  Feed(d_.server, "235 ok\r\n");
  Feed(d_.client, "MAIL FROM:<a@b>\r\n");  // shown again once the exchange is over
  EXPECT_EQ(proxy_->Display().RecentlyTransferredData(), "MAIL FROM:<a@b>\r\n");
  EXPECT_TRUE(Receives(d_.server,
                       "AUTH PLAIN AGpvZQBzZWNyZXQ=\r\nAUTH LOGIN\r\nam9l\r\nc2VjcmV0\r\n"
                       "MAIL FROM:<a@b>\r\n"));
  for (const char* secret : {"AGpvZQBzZWNyZXQ", "am9l", "c2VjcmV0"}) {
    EXPECT_FALSE(log.Contains(secret)) << secret;
  }
}

}  // namespace
}  // namespace brindle::proxytest
