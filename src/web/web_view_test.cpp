#include "web/web_view.h"

#include <sys/stat.h>

#include <atomic>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <thread>

#include <gtest/gtest.h>
#include <asio/ip/tcp.hpp>
#include <asio/read.hpp>
#include <asio/write.hpp>

#include "proxy/proxy.h"
#include "proxy/step_counts.h"
#include "rewrite/filter_log.h"
#include "rewrite/spammer_list.h"
#include "rewrite/spammer_list_file.h"
#include "web/web_server.h"

namespace brindle::web {
namespace {

constexpr uint16_t kPort = 8119;

std::string ReadFile(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream text;
  text << in.rdbuf();
  return text.str();
}
const std::string kHost = "127.0.0.1:8119";

class WebViewTest : public ::testing::Test {
 protected:
  WebViewTest()
      : proxy_(io_, store_), view_(io_, proxy_, store_, rules_, [this](const Settings& s) {
          saved_.push_back(s);
          return true;
        }) {}

  WebRequest Get(const std::string& target) {
    WebRequest r{"GET", target, kHost, "", "", "brindle_key=" + rules_.Secret(), "", ""};
    return r;
  }
  WebRequest Post(const std::string& target, const std::string& page, std::string body) {
    WebRequest r{"POST",
                 target,
                 kHost,
                 "http://" + kHost,
                 "",
                 "brindle_key=" + rules_.Secret(),
                 "application/x-www-form-urlencoded;charset=UTF-8",
                 ""};
    r.body = "page=" + page + "&token=" + rules_.PageToken(page) + "&" + body;
    return r;
  }

  asio::io_context io_;
  SettingsStore store_;
  Proxy proxy_;
  AccessRules rules_{MakeSecret(), kPort};
  std::vector<Settings> saved_;
  WebView view_;
};

TEST_F(WebViewTest, SignInOnceThenTheCookieCarriesTheSecret) {
  WebRequest first = Get("/?key=" + rules_.Secret());
  first.cookie.clear();
  WebResponse signedIn = view_.Handle(first);
  EXPECT_EQ(signedIn.status, 303);
  bool cookieSet = false;
  for (const auto& [name, value] : signedIn.headers) {
    if (name != "Set-Cookie") continue;
    cookieSet = value.find("brindle_key=" + rules_.Secret()) == 0 &&
                value.find("HttpOnly") != std::string::npos &&
                value.find("SameSite=Strict") != std::string::npos;
  }
  EXPECT_TRUE(cookieSet);

  WebRequest wrongKey = first;
  wrongKey.target = "/?key=" + MakeSecret();
  EXPECT_EQ(view_.Handle(wrongKey).status, 403);

  WebResponse page = view_.Handle(Get("/"));
  EXPECT_EQ(page.status, 200);
  EXPECT_NE(page.body.find("<!DOCTYPE html>"), std::string::npos);
}

TEST_F(WebViewTest, RefusesWithoutTheSecretOrUnderAForeignHost) {
  WebRequest noCookie = Get("/api/status");
  noCookie.cookie = "other=1";
  EXPECT_EQ(view_.Handle(noCookie).status, 403);
  WebRequest wrongCookie = Get("/api/status");
  wrongCookie.cookie = "brindle_key=" + MakeSecret();
  EXPECT_EQ(view_.Handle(wrongCookie).status, 403);

  // A name re-pointed at 127.0.0.1 (DNS rebinding) or another port is not us.
  for (const char* host :
       {"evil.example:8119", "127.0.0.1:8120", "127.0.0.1", "localhost.evil:8119", ""}) {
    WebRequest r = Get("/api/status");
    r.host = host;
    EXPECT_EQ(view_.Handle(r).status, 403) << host;
  }
  WebRequest local = Get("/api/status");
  local.host = "LocalHost:8119";
  EXPECT_EQ(view_.Handle(local).status, 200);
}

TEST_F(WebViewTest, ChangesNeedOurOriginTheirPageTokenAndABoundedBody) {
  const std::string body = "language=DE";
  EXPECT_EQ(view_.Handle(Post("/api/language", "options", body)).status, 200);
  ASSERT_EQ(saved_.size(), 1u);
  EXPECT_EQ(saved_[0].intLanguage, kLangGerman);

  WebRequest foreign = Post("/api/language", "options", body);
  foreign.origin = "http://evil.example";
  EXPECT_EQ(view_.Handle(foreign).status, 403);
  WebRequest noOrigin = Post("/api/language", "options", body);
  noOrigin.origin.clear();
  EXPECT_EQ(view_.Handle(noOrigin).status, 403);
  noOrigin.referer = "http://localhost:8119/#options";
  EXPECT_EQ(view_.Handle(noOrigin).status, 200);

  WebRequest otherPagesToken = Post("/api/language", "options", body);
  otherPagesToken.body = "page=options&token=" + rules_.PageToken("dryrun") + "&" + body;
  const auto stale = view_.Handle(otherPagesToken);
  EXPECT_EQ(stale.status, 403);
  EXPECT_EQ(stale.body, "Diese Seite ist veraltet: Laden Sie sie neu.\n");  // the user's language

  WebRequest plainText = Post("/api/language", "options", body);
  plainText.contentType = "text/plain";  // what a cross-site form may send unasked
  EXPECT_EQ(view_.Handle(plainText).status, 415);

  WebRequest huge = Post("/api/dryrun", "dryrun", "text=" + std::string(kMaxBodySize, 'x'));
  EXPECT_EQ(view_.Handle(huge).status, 413);
  EXPECT_EQ(saved_.size(), 2u);
}

TEST_F(WebViewTest, DryRunShowsTheRewrittenArticleWithChangedLinesMarked) {
  Settings s;
  s.intXNewsreader = 1;
  s.strXNewsreader = "brindle test";
  store_.Replace(s);
  WebResponse r =
      view_.Handle(Post("/api/dryrun", "dryrun",
                        "kind=news&text=Subject%3A%20hi%0AX-Newsreader%3A%20old%0A%0Abody%0A"));
  ASSERT_EQ(r.status, 200);
  EXPECT_NE(r.body.find("{\"text\":\"X-Newsreader: brindle test\",\"changed\":true}"),
            std::string::npos)
      << r.body;
  EXPECT_NE(r.body.find("{\"text\":\"body\",\"changed\":false}"), std::string::npos) << r.body;
  EXPECT_EQ(proxy_.Counts().headersReplaced, 0u);  // a dry run is not traffic
}

// The status page shows the filter log's newest lines and adds a sender
// from one of them to the spammer list.
TEST_F(WebViewTest, FilterLogLinesAndAddingTheirSenderToTheList) {
  const auto dir = std::filesystem::temp_directory_path() / ("brindle-web-log-" + MakeSecret());
  std::filesystem::create_directories(dir);
  Settings s;
  s.strLog = (dir / "filtered.log").string();
  s.strSpammers = (dir / "spammers.txt").string();
  store_.Replace(s);
  FilterLogEntry entry{"2026-11-23 15:40:02", "NNTP 1119 news", "<a@b>",
                       "joe@spam.example",    "Cheap",          {}};
  entry.changes.Add(DownloadStep::kSubjectMarked);
  ASSERT_TRUE(AppendFilterLog(s.strLog, FilterLogLine(entry)));

  const std::string log = view_.Handle(Get("/api/filterlog")).body;
  EXPECT_NE(log.find("\"sender\":\"joe@spam.example\""), std::string::npos) << log;
  EXPECT_NE(log.find("\"changes\":[\"change.subjectMarked\"]"), std::string::npos) << log;

  EXPECT_EQ(view_.Handle(Post("/api/spammer", "status", "sender=joe%40spam.example")).body,
            "{\"result\":\"added\"}");
  EXPECT_EQ(view_.Handle(Post("/api/spammer", "status", "sender=joe%40spam.example")).body,
            "{\"result\":\"listed\"}");
  EXPECT_TRUE(SpammerList::Parse(ReadFile(s.strSpammers)).Matches("joe@spam.example"));

  // Without a list the refusal is in the user's language.
  s.strSpammers.clear();
  s.intLanguage = kLangGerman;
  store_.Replace(s);
  const auto refused = view_.Handle(Post("/api/spammer", "status", "sender=joe%40spam.example"));
  EXPECT_EQ(refused.status, 409);
  EXPECT_EQ(refused.body, "Es ist keine Spammerliste eingestellt.\n");
  std::filesystem::remove_all(dir);
}

TEST(WebSecretTest, KeptOwnerOnly) {
  const auto dir = std::filesystem::temp_directory_path() / ("brindle-web-" + MakeSecret());
  std::filesystem::create_directories(dir);
  std::string error;
  ASSERT_TRUE(SaveSecret(dir.string(), "abc", error)) << error;
  struct stat st {};
  ASSERT_EQ(stat((dir / kSecretFileName).c_str(), &st), 0);
  EXPECT_EQ(st.st_mode & 0777, 0600);
  std::filesystem::remove_all(dir);
}

// Over a real socket: the server's own limits refuse a body larger than the
// bound before the view sees it, and the Host rule reaches the view.
TEST_F(WebViewTest, ServerRefusesOversizedBodiesOnTheWire) {
  uint16_t port = 0;
  {
    asio::ip::tcp::acceptor probe(io_, {asio::ip::address_v4::loopback(), 0});
    port = probe.local_endpoint().port();
  }
  AccessRules rules(MakeSecret(), port);
  WebView view(io_, proxy_, store_, rules, [](const Settings&) { return true; });
  WebServer server(io_, view, port);
  std::string error;
  ASSERT_TRUE(server.Open(error)) << error;

  auto exchange = [&](const std::string& request) {
    std::string answer;
    std::atomic<bool> done{false};
    std::thread client([&] {
      asio::io_context cio;
      asio::ip::tcp::socket socket(cio);
      std::error_code ec;
      socket.connect({asio::ip::address_v4::loopback(), port}, ec);
      asio::write(socket, asio::buffer(request), ec);
      asio::read(socket, asio::dynamic_buffer(answer), ec);  // until the server closes
      done = true;
    });
    while (!done) {
      io_.restart();
      io_.run_for(std::chrono::milliseconds(10));
    }
    client.join();
    return answer;
  };
  const std::string cookie = "Cookie: brindle_key=" + rules.Secret() + "\r\n";
  const std::string host = "Host: 127.0.0.1:" + std::to_string(port) + "\r\n";
  EXPECT_EQ(
      exchange("GET /api/status HTTP/1.1\r\n" + host + cookie + "\r\n").rfind("HTTP/1.1 200", 0),
      0u);
  EXPECT_EQ(exchange("GET /api/status HTTP/1.1\r\nHost: evil.example:" + std::to_string(port) +
                     "\r\n" + cookie + "\r\n")
                .rfind("HTTP/1.1 403", 0),
            0u);
  const std::string oversized = "POST /api/dryrun HTTP/1.1\r\n" + host + cookie +
                                "Content-Type: application/x-www-form-urlencoded\r\n"
                                "Content-Length: " +
                                std::to_string(kMaxBodySize + 1) + "\r\n\r\n" +
                                std::string(kMaxBodySize + 1, 'x');
  // Dropped by the server before the view would answer (it says 403 or 413).
  EXPECT_EQ(exchange(oversized), "");
  server.Close();
}

}  // namespace
}  // namespace brindle::web
