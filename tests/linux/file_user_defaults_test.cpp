#include "platforms/linux/system/file_user_defaults.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platforms/linux/system/pollable_main_queue.h"

namespace pellow {
namespace {

namespace fs = std::filesystem;

std::string contentsOf(const fs::path& file) {
  std::ifstream stream(file);
  return {std::istreambuf_iterator(stream), {}};
}

nlohmann::json parsed(const fs::path& file) {
  return nlohmann::json::parse(contentsOf(file), nullptr, false);
}

class FileUserDefaultsTest : public testing::Test {
 protected:
  FileUserDefaultsTest() {
    std::string pattern = fs::temp_directory_path() / "pellow-defaults-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    file_ = folder_ / "pellow" / "defaults.json";
  }
  ~FileUserDefaultsTest() override {
    std::error_code ignored;
    fs::permissions(folder_, fs::perms::owner_all, ignored);
    fs::remove_all(folder_, ignored);
  }

  void put(const std::string& contents) {
    fs::create_directories(file_.parent_path());
    std::ofstream(file_) << contents;
  }
  FileUserDefaults& open() { return defaults_.emplace(file_, queue_, log_); }

  // What the loop of the program does, until the file has changed.
  void runUntilWritten() {
    const auto before = contentsOf(file_);
    while (contentsOf(file_) == before) {
      pollfd descriptor{queue_.fileDescriptor(), POLLIN, 0};
      ASSERT_EQ(poll(&descriptor, 1, 30'000), 1) << "nothing is going to be written";
      queue_.runPending();
    }
  }

  fs::path folder_;
  fs::path file_;
  std::vector<std::string> warnings_;
  Log log_{[this](LogLevel, std::string_view message) { warnings_.emplace_back(message); }};
  PollableMainQueue queue_;
  std::optional<FileUserDefaults> defaults_;
};

TEST_F(FileUserDefaultsTest, EveryKindOfValueSurvivesAndIsReadable) {
  const std::string binary("\xFF\x00\x80 not text", 12);
  const std::vector<std::pair<std::string, DefaultsValue>> values{
      {"flag", true},
      {"size", 40.0},
      {"fraction", 0.1},
      {"name", "Gr\u00FC\u00DFe \"here\""},
      {"json", DefaultsData{R"([{"a":1}])"}},
      {"nothing", DefaultsData{}},
      {"binary", DefaultsData{binary}}};
  for (const auto& [key, value] : values) (void)open().set(key, value, Kept::eventually);
  defaults_->flush();

  // To the letter: other programs read it.
  EXPECT_EQ(contentsOf(file_), R"({
  "flag": true,
  "size": 40,
  "fraction": 0.1,
  "name": "Grüße \"here\"",
  "json": {
    "data": "[{\"a\":1}]"
  },
  "nothing": {
    "data": ""
  },
  "binary": {
    "base64": "/wCAIG5vdCB0ZXh0"
  }
}
)");
  struct stat status{};
  ASSERT_EQ(stat(file_.c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);

  for (const auto& [key, value] : values) EXPECT_EQ(open().value(key), value) << key;
  EXPECT_EQ(defaults_->value("none"), std::nullopt);
}

TEST_F(FileUserDefaultsTest, DataIsTextOnlyWhereItIsUTF8) {
  const std::vector<std::pair<std::string, std::string>> cases = {
      {"\xF0\x9F\x98\x80", R"({"data":"😀"})"},
      {std::string("\0", 1), R"({"data":"\u0000"})"},
      {"\xC0\x80", R"({"base64":"wIA="})"},              // longer than needed
      {"\xED\xA0\x80", R"({"base64":"7aCA"})"},          // a surrogate
      {"\xF4\x90\x80\x80", R"({"base64":"9JCAgA=="})"},  // beyond the last character
      {"a\xE2\x82", R"({"base64":"YeKC"})"},             // cut off
  };
  for (const auto& [bytes, json] : cases) {
    ASSERT_TRUE(open().set("data", DefaultsData{bytes}, Kept::atOnce)) << json;
    EXPECT_EQ(parsed(file_)["data"].dump(), nlohmann::json::parse(json).dump());
    EXPECT_EQ(open().value("data"), DefaultsValue(DefaultsData{bytes})) << json;
  }
}

TEST_F(FileUserDefaultsTest, WhatItDoesNotKnowIsNoValueAndStaysAsItIs) {
  put(R"({"z": {"data": 5}, "a": [1, {"b": null}], "n": null, "big": 9007199254740993,
          "bad64": {"base64": "%%%="}, "two": {"data": "x", "base64": "eA=="}, "size": 1.0})");
  const auto before = nlohmann::json::parse(contentsOf(file_));
  auto& defaults = open();
  defaults.registerDefaults({{"a", std::string("registered")}, {"size", 3.0}, {"other", 7.0}});
  for (const auto* key : {"z", "n", "bad64", "two"})
    EXPECT_EQ(defaults.value(key), std::nullopt) << key;
  EXPECT_EQ(defaults.value("a"), DefaultsValue("registered"));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(1.0));
  EXPECT_EQ(defaults.value("other"), DefaultsValue(7.0));

  ASSERT_TRUE(defaults.set("size", 2.0, Kept::atOnce));
  auto after = before;
  after["size"] = 2;
  EXPECT_EQ(parsed(file_), after);
  EXPECT_TRUE(contentsOf(file_).contains("9007199254740993"));
  EXPECT_LT(contentsOf(file_).find("\"z\""), contentsOf(file_).find("\"a\""));  // in its order
}

TEST_F(FileUserDefaultsTest, ImmediateIsThereAtOnceTheRestSoonAndAtTheEnd) {
  auto& defaults = open();
  ASSERT_TRUE(defaults.set("journal", 1.0, Kept::atOnce));
  EXPECT_EQ(parsed(file_)["journal"], 1);

  ASSERT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(2.0));
  EXPECT_FALSE(parsed(file_).contains("size"));
  runUntilWritten();
  EXPECT_EQ(parsed(file_)["size"], 2);

  // An immediate write takes along what waits, in the order of the calls.
  ASSERT_TRUE(defaults.set("size", 3.0, Kept::eventually));
  ASSERT_TRUE(defaults.set("journal", 4.0, Kept::atOnce));
  EXPECT_EQ(parsed(file_), (nlohmann::json{{"journal", 4}, {"size", 3}}));

  ASSERT_TRUE(defaults.set("size", 5.0, Kept::eventually));
  defaults_.reset();
  EXPECT_EQ(parsed(file_)["size"], 5);
  EXPECT_EQ(std::distance(fs::directory_iterator(file_.parent_path()), {}), 1);
}

TEST_F(FileUserDefaultsTest, ReadersNeverSeeHalfAFileAndLinksStayLinks) {
  const auto target = folder_ / "kept elsewhere.json";
  std::ofstream(target) << "{}";
  fs::create_directories(file_.parent_path());
  fs::create_symlink(target, file_);
  std::ifstream reader(file_);
  ASSERT_TRUE(open().set("size", 1.0, Kept::atOnce));
  EXPECT_TRUE(fs::is_symlink(file_));
  EXPECT_EQ(parsed(target)["size"], 1);
  // Replaced, not overwritten: who had it open still reads the old contents.
  EXPECT_EQ(std::string(std::istreambuf_iterator(reader), {}), "{}");
}

TEST_F(FileUserDefaultsTest, AFileThatIsNoObjectIsSetAsideAndNeverLost) {
  for (const std::string suffix : {".bad", ".bad.1", ".bad.2"}) {
    put("[" + suffix);
    EXPECT_EQ(open().value("size"), std::nullopt);
    EXPECT_FALSE(fs::exists(file_));
    EXPECT_EQ(contentsOf(file_.native() + suffix), "[" + suffix);
    EXPECT_TRUE(warnings_.back().contains("defaults.json" + suffix)) << warnings_.back();
  }
  ASSERT_TRUE(defaults_->set("size", 1.0, Kept::atOnce));
  EXPECT_EQ(parsed(file_)["size"], 1);
}

TEST_F(FileUserDefaultsTest, AFileThatCannotBeReadIsLeftAloneAndTheProgramGoesOnInMemory) {
  fs::create_directories(file_);  // a folder where the file should be
  auto& defaults = open();
  ASSERT_EQ(warnings_.size(), 1u);
  const auto written = defaults.set("size", 1.0, Kept::atOnce);
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().sentence, warnings_[0]);
  EXPECT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(2.0));
  defaults_.reset();
  EXPECT_TRUE(fs::is_directory(file_));
  EXPECT_EQ(warnings_.size(), 1u);
}

TEST_F(FileUserDefaultsTest, AWriteThatFailsSaysSoAndTheNextOneTakesItsValueAlong) {
  const fs::path inTheWay = file_.native() + ".new";
  fs::create_directories(inTheWay);
  auto& defaults = open();
  EXPECT_FALSE(defaults.set("journal", 1.0, Kept::atOnce));
  EXPECT_TRUE(warnings_.empty());  // the caller says it
  EXPECT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  defaults.flush();
  EXPECT_TRUE(defaults.set("size", 3.0, Kept::eventually));
  defaults.flush();
  EXPECT_EQ(warnings_.size(), 1u);  // not every quarter of a second
  EXPECT_FALSE(fs::exists(file_));

  fs::remove(inTheWay);
  ASSERT_TRUE(defaults.set("journal", 1.0, Kept::atOnce));  // the same value, unwritten yet
  EXPECT_EQ(parsed(file_), (nlohmann::json{{"journal", 1}, {"size", 3}}));
}

// As two Pellows of one user on two displays do.
TEST_F(FileUserDefaultsTest, TwoProgramsOnOneFileKeepWhatTheOtherHasChanged) {
  put(R"({"size": 1, "journal": 1, "theirs": null})");
  auto& first = open();
  FileUserDefaults second(file_, queue_, log_);
  ASSERT_TRUE(first.set("journal", 2.0, Kept::atOnce));
  ASSERT_TRUE(second.set("size", 3.0, Kept::atOnce));
  ASSERT_TRUE(first.set("name", "first", Kept::eventually));
  ASSERT_TRUE(second.set("name", "second", Kept::atOnce));
  EXPECT_EQ(parsed(file_), nlohmann::json::parse(R"({"size": 3, "journal": 2, "theirs": null,
                                                     "name": "second"})"));
  EXPECT_EQ(first.value("size"), DefaultsValue(1.0)) << "it goes by what it has read";
  first.flush();
  EXPECT_EQ(parsed(file_)["name"], "first") << "the later write of the same key stands";
  EXPECT_EQ(parsed(file_)["size"], 3);

  // Of a file that is gone or broken there is nothing to keep but what this program knows.
  fs::remove(file_);
  ASSERT_TRUE(second.set("journal", 4.0, Kept::atOnce));
  EXPECT_EQ(parsed(file_), nlohmann::json::parse(R"({"size": 3, "journal": 4, "theirs": null,
                                                     "name": "second"})"));
  put("half an edi");
  ASSERT_TRUE(second.set("journal", 5.0, Kept::atOnce));
  EXPECT_EQ(parsed(file_)["size"], 3);
  EXPECT_EQ(parsed(file_)["journal"], 5);
  EXPECT_EQ(contentsOf(file_.native() + ".bad"), "half an edi");

  const auto setMany = [](FileUserDefaults& defaults, const std::string& prefix) {
    for (int number = 0; number < 50; ++number)
      (void)defaults.set(prefix + std::to_string(number), 1.0, Kept::atOnce);
  };
  const auto before = parsed(file_).size();
  std::thread atOnce([&] { setMany(first, "a"); });
  setMany(second, "b");
  atOnce.join();
  EXPECT_EQ(parsed(file_).size(), before + 100) << "both write at once";
}

TEST_F(FileUserDefaultsTest, LivesInTheConfigurationFolder) {
  setenv("HOME", "/home/me", 0);
  for (const auto* const none : {"relative", ""}) {
    setenv("XDG_CONFIG_HOME", none, 1);
    EXPECT_EQ(FileUserDefaults::standardFile(),
              std::getenv("HOME") + std::string("/.config/pellow/defaults.json"));
  }
  unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace pellow
