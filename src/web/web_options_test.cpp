// Apply from the browser goes through the one apply path: the file is
// written whole, and a tunnel whose record changed is restarted.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "core/settings_file.h"
#include "proxy/proxy.h"
#include "proxy/tunnel.h"
#include "web/web_options.h"
#include "web/web_view.h"

namespace brindle::web {
namespace {

std::string ReadAll(const std::filesystem::path& path) {
  std::ifstream in(path, std::ios::binary);
  std::stringstream s;
  s << in.rdbuf();
  return s.str();
}

uint16_t FreePort(asio::io_context& io) {
  asio::ip::tcp::acceptor probe(io, {asio::ip::address_v4::loopback(), 0});
  return probe.local_endpoint().port();
}

class WebOptionsTest : public ::testing::Test {
 protected:
  WebOptionsTest() {
    std::filesystem::create_directories(dir_);
    Settings s;
    s.strSettingsDir = dir_.string();
    s.strIniPath = (dir_ / "OE_Brindle.ini").string();
    store_.Replace(s);
  }
  ~WebOptionsTest() override { std::filesystem::remove_all(dir_); }

  WebResponse Apply(const std::string& fields) {
    WebRequest r{"POST",
                 "/api/options",
                 "127.0.0.1:8119",
                 "http://127.0.0.1:8119",
                 "",
                 "brindle_key=" + rules_.Secret(),
                 "application/x-www-form-urlencoded",
                 ""};
    r.body = "page=options&token=" + rules_.PageToken("options") + "&" + fields;
    WebResponse answer = view_.Handle(r);
    for (int i = 0; i < 200 && io_.poll() > 0;) ++i;  // the tunnels' restarts
    return answer;
  }

  std::filesystem::path dir_ =
      std::filesystem::temp_directory_path() / ("brindle-web-options-" + MakeSecret());
  asio::io_context io_;
  SettingsStore store_;
  Proxy proxy_{io_, store_};
  AccessRules rules_{MakeSecret(), 8119};
  WebView view_{io_, proxy_, store_, rules_,
                [](const Settings& s) { return SaveSettings2Ini(s).ok(); }};
};

TEST_F(WebOptionsTest, ApplyWritesTheFileAndRestartsTheChangedTunnel) {
  const std::string port = std::to_string(FreePort(io_));
  const std::string row =
      "tunnels=1&tunnel0.tType=0&tunnel0.Server=news.example.org&tunnel0.SrcPort=" + port +
      "&tunnel0.AutoStart=1&tunnel0.SSL=1";
  ASSERT_EQ(Apply(row + "&tunnel0.origin=&tunnel0.DestPort=119").body, "{\"applied\":true}");
  ASSERT_EQ(proxy_.Tunnels().size(), 1u);
  EXPECT_TRUE(proxy_.Tunnels()[0]->IsRunning());
  const std::string file = ReadAll(dir_ / "OE_Brindle.ini");
  // News tunnels keep no SSL flag: the box is ignored for them.
  EXPECT_NE(file.find("[NNTPServer]\r\nServerName=news.example.org\r\nSrcPort=" + port +
                      "\r\nDestPort=119\r\nAutoStart= 1 \r\nSSL= 0 \r\n"),
            std::string::npos)
      << file;
  EXPECT_EQ(file, SettingsFileText(*store_.Current()));

  ASSERT_EQ(Apply(row + "&tunnel0.origin=0&tunnel0.DestPort=120").body, "{\"applied\":true}");
  ASSERT_EQ(proxy_.Tunnels().size(), 1u);
  EXPECT_EQ(proxy_.Tunnels()[0]->DestPort, 120);
  EXPECT_TRUE(proxy_.Tunnels()[0]->IsRunning());

  // A refusal is the page's language string; nothing changes.
  const std::string before = ReadAll(dir_ / "OE_Brindle.ini");
  const WebResponse refused =
      Apply("tunnels=1&tunnel0.origin=0&tunnel0.Server=&tunnel0.SrcPort=1&tunnel0.DestPort=1");
  EXPECT_NE(refused.body.find("\"applied\":false"), std::string::npos);
  EXPECT_NE(refused.body.find("Enter server address."), std::string::npos) << refused.body;
  EXPECT_EQ(ReadAll(dir_ / "OE_Brindle.ini"), before);
  EXPECT_EQ(proxy_.Tunnels()[0]->DestPort, 120);
}

// The pages the options window has beyond tunnels and headers: what the
// browser sends lands in the file as the window would write it, multi-line
// boxes with CR LF, and a bad port is refused with the tunnel's message.
TEST_F(WebOptionsTest, EveryPageReachesTheFileAndABadWebPortIsRefused) {
  ASSERT_EQ(Apply("misc.Strip=600&misc.WebPort=8120&misc.AutoMaximize=1&misc.CC=cc%40x"
                  "&quotes.news=1&quotes.newsText=%25n+wrote%3A%0Aline+two&quotes.mail=0"
                  "&quotes.mailText=&text.Wrap=200&text.BottomPosting=0&files.Styles=s.css"
                  "&files.Spammers=%2Ftmp%2Fsp.txt&files.SpammerAddress=sp%40x&files.Log=l.log"
                  "&icon.TrayIcon=0&start.state=2&senders=1&sender0.record=&sender0.email=a%40x"
                  "&sender0.text=--%0Aa&sender0.files=2&sender0.file0=%2Fs1&sender0.file1=")
                .body,
            "{\"applied\":true}");
  const std::string file = ReadAll(dir_ / "OE_Brindle.ini");
  for (const char* line :
       {"\r\nStripReferences=600\r\n", "\r\nAutoBCC=\r\nWebPort=8120\r\n",
        "\r\nAutoMaximize=1\r\nAutoCC=cc@x\r\n", "\r\nWrapText=132\r\nBottomPosting=0\r\n",
        "\r\nSpammerAddress=sp@x\r\nSpammersBase=/tmp/sp.txt\r\nLogFile=l.log\r\nStyles=s.css\r\n",
        "\r\nTrayIcon=0\r\n", "\r\nOEWindowStartupState=2\r\n",
        "[NewsQuoteHeader]\r\nLines=2\r\n%n wrote:\r\nline two\r\nChangeQuoteHeader=1\r\n",
        "SigLines=2\r\n--\r\na\r\nRandomSig=0\r\nSigFile=/s1\r\n[Backgrounds]"})
    EXPECT_NE(file.find(line), std::string::npos) << line << " missing from\n" << file;
  const std::string json = OptionsJson(*store_.Current());
  EXPECT_NE(json.find("\"files\":[\"/s1\"]"), std::string::npos) << json;
  EXPECT_NE(json.find("\"start\":{\"state\":2}"), std::string::npos) << json;

  const WebResponse refused = Apply("misc.Strip=600&misc.WebPort=70000");
  EXPECT_NE(refused.body.find("Port number must be between 1 and 65535"), std::string::npos)
      << refused.body;
  EXPECT_NE(refused.body.find("\"tab\":\"misc\""), std::string::npos) << refused.body;
  EXPECT_EQ(ReadAll(dir_ / "OE_Brindle.ini"), file);
}

}  // namespace
}  // namespace brindle::web
