#include "app/options.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace brindle::app {
namespace {

using ::testing::ElementsAre;

Options Parse(std::vector<const char*> args) {
  args.insert(args.begin(), "brindle");
  return ParseOptions(static_cast<int>(args.size()), args.data());
}

TEST(Options, EverythingAfterClientBelongsToTheClient) {
  const Options o = Parse(
      {"--settings-dir", "/tmp/x", "--client", "slrn", "--settings-dir", "-h", "--version", ""});
  EXPECT_TRUE(o.error.empty());
  EXPECT_EQ(o.settingsDir, "/tmp/x");
  EXPECT_FALSE(o.help);
  EXPECT_FALSE(o.version);
  EXPECT_THAT(o.client, ElementsAre("slrn", "--settings-dir", "-h", "--version", ""));
}

TEST(Options, RejectsWhatItCannotUse) {
  EXPECT_FALSE(Parse({"--client"}).error.empty());
  EXPECT_FALSE(Parse({"--settings-dir"}).error.empty());
  EXPECT_FALSE(Parse({"--settings-dir", ""}).error.empty());
  EXPECT_FALSE(Parse({"--verbose"}).error.empty());
  EXPECT_FALSE(Parse({"slrn"}).error.empty());  // a client needs --client
  EXPECT_TRUE(Parse({"--help"}).help);
  EXPECT_TRUE(Parse({"--version"}).version);
}

TEST(Options, CompanionPortOverride) {
  EXPECT_EQ(CompanionPortOverride(nullptr).value(), std::nullopt);
  EXPECT_EQ(CompanionPortOverride("").value(), std::nullopt);
  EXPECT_EQ(CompanionPortOverride("40123").value(), 40123);
  for (const char* bad : {"0", "65536", "12ab", "-1", " 80"}) {
    EXPECT_FALSE(CompanionPortOverride(bad).ok()) << bad;
  }
}

}  // namespace
}  // namespace brindle::app
