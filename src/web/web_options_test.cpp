// Apply from the browser goes through the one apply path: the file is
// written whole, and a tunnel whose record changed is restarted.
#include <filesystem>
#include <fstream>
#include <sstream>

#include <gtest/gtest.h>

#include "core/settings_file.h"
#include "proxy/proxy.h"
#include "proxy/tunnel.h"
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

}  // namespace
}  // namespace brindle::web
