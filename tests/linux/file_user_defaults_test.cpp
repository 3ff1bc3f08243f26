#include "platforms/linux/system/file_user_defaults.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <chrono>
#include <cstdlib>
#include <fstream>
#include <iterator>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <thread>
#include <vector>

#include "platforms/linux/x11/display_name.h"
#include "platforms/posix/file_descriptor.h"
#include "tests/harness/eventually.h"

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

mode_t modeOf(const fs::path& file) {
  struct stat status{};
  return stat(file.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

class FileUserDefaultsTest : public testing::Test {
 protected:
  FileUserDefaultsTest() {
    std::string pattern = fs::temp_directory_path() / "pellow-defaults-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    settings_ = folder_ / "configuration" / "pellow" / "defaults.json";
    session_ = folder_ / "runtime" / "pellow" / "parked-:7.json";
  }
  ~FileUserDefaultsTest() override {
    defaults_.reset();
    std::error_code ignored;
    fs::permissions(folder_, fs::perms::owner_all, ignored);
    fs::remove_all(folder_, ignored);
  }

  static void put(const fs::path& file, const std::string& contents) {
    fs::create_directories(file.parent_path());
    std::ofstream(file) << contents;
  }
  FileUserDefaults& open() {
    defaults_.reset();
    return defaults_.emplace(FileUserDefaults::Files{settings_, session_}, log_);
  }
  // The settings file once everything is on disk.
  nlohmann::json written() {
    defaults_->finish();
    return parsed(settings_);
  }
  std::vector<std::string> warnings() const {
    const std::lock_guard lock(mutex_);
    return warnings_;
  }

  fs::path folder_;
  fs::path settings_;
  fs::path session_;
  mutable std::mutex mutex_;
  std::vector<std::string> warnings_;
  Log log_{[this](LogLevel, std::string_view message) {
    const std::lock_guard lock(mutex_);
    warnings_.emplace_back(message);
  }};
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
  for (const auto& [key, value] : values) {
    ASSERT_TRUE(open().set(key, value, Kept::eventually));
    ASSERT_TRUE(defaults_->set("once " + key, value, Kept::atOnce));
  }
  defaults_->finish();

  // To the letter: other programs read it.
  EXPECT_EQ(contentsOf(settings_), R"({
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
  for (const auto& file : {settings_, session_}) {
    EXPECT_EQ(modeOf(file) & 0777, 0600u);
    EXPECT_EQ(modeOf(file.parent_path()), 0700u);
  }
  EXPECT_TRUE(modeOf(session_) & S_ISVTX) << "whoever cleans up such folders would take it";

  for (const auto& [key, value] : values) {
    EXPECT_EQ(open().value(key), value) << key;
    EXPECT_EQ(open().value("once " + key), value) << key;
  }
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
    EXPECT_EQ(parsed(session_)["data"].dump(), nlohmann::json::parse(json).dump());
    EXPECT_EQ(open().value("data"), DefaultsValue(DefaultsData{bytes})) << json;
  }
}

TEST_F(FileUserDefaultsTest, WhatItDoesNotKnowIsNoValueAndStaysAsItIs) {
  put(settings_, R"({"z": {"data": 5}, "a": [1, {"b": null}], "n": null, "big": 9007199254740993,
          "bad64": {"base64": "%%%="}, "two": {"data": "x", "base64": "eA=="}, "size": 1.0})");
  const auto before = parsed(settings_);
  auto& defaults = open();
  defaults.registerDefaults({{"a", std::string("registered")}, {"size", 3.0}, {"other", 7.0}});
  for (const auto* key : {"z", "n", "bad64", "two"})
    EXPECT_EQ(defaults.value(key), std::nullopt) << key;
  EXPECT_EQ(defaults.value("a"), DefaultsValue("registered"));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(1.0));
  EXPECT_EQ(defaults.value("other"), DefaultsValue(7.0));

  ASSERT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  auto after = before;
  after["size"] = 2;
  EXPECT_EQ(written(), after);
  const auto text = contentsOf(settings_);
  EXPECT_TRUE(text.contains("9007199254740993"));
  EXPECT_LT(text.find("\"z\""), text.find("\"a\""));  // the order is kept
}

TEST_F(FileUserDefaultsTest, WhatIsKeptAtOnceIsThereAtOnceTheSettingsSoonAndAtTheEnd) {
  auto& defaults = open();
  ASSERT_TRUE(defaults.set("journal", 1.0, Kept::atOnce));
  EXPECT_EQ(parsed(session_), (nlohmann::json{{"journal", 1}}));

  ASSERT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  ASSERT_TRUE(defaults.set("journal", 3.0, Kept::atOnce));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(2.0));
  EXPECT_EQ(parsed(session_), (nlohmann::json{{"journal", 3}}));
  EXPECT_TRUE(desktop::eventually([&] { return fs::exists(settings_); }))
      << "it has to come unasked";
  EXPECT_EQ(parsed(settings_), (nlohmann::json{{"size", 2}}));

  ASSERT_TRUE(defaults.set("size", 5.0, Kept::eventually));
  defaults_.reset();
  EXPECT_EQ(parsed(settings_)["size"], 5);
  for (const auto& file : {settings_, session_})
    EXPECT_EQ(std::distance(fs::directory_iterator(file.parent_path()), {}), 1);
}

// Holding the lock on the new file looks like a slow disk to everyone else.
TEST_F(FileUserDefaultsTest, ASlowDiskDelaysNothingButTheEndAndThatNotForLong) {
  put(settings_, R"({"size": 1})");
  const FileDescriptor disk(::open((settings_.native() + ".new").c_str(), O_CREAT | O_RDWR, 0600));
  ASSERT_EQ(flock(disk.number(), LOCK_EX), 0);
  const auto start = std::chrono::steady_clock::now();
  auto& defaults = open();
  ASSERT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  ASSERT_TRUE(defaults.set("journal", 3.0, Kept::atOnce));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(2.0));
  EXPECT_EQ(parsed(session_)["journal"], 3);
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(1));

  defaults_.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
  ASSERT_EQ(warnings().size(), 1u);
  EXPECT_TRUE(warnings()[0].contains(settings_.native())) << warnings()[0];
  EXPECT_EQ(parsed(settings_)["size"], 1);
  flock(disk.number(), LOCK_UN);
  EXPECT_TRUE(desktop::eventually([&] { return parsed(settings_)["size"] == 2; }));
}

TEST_F(FileUserDefaultsTest, ReadersNeverSeeHalfAFileAndLinksStayLinks) {
  const auto target = folder_ / "kept elsewhere.json";
  put(target, "{}");
  put(session_, "{ }");
  fs::create_directories(settings_.parent_path());
  fs::create_symlink(target, settings_);
  std::ifstream settings(settings_);
  std::ifstream session(session_);
  ASSERT_TRUE(open().set("size", 1.0, Kept::eventually));
  ASSERT_TRUE(defaults_->set("journal", 1.0, Kept::atOnce));
  EXPECT_EQ(written()["size"], 1);
  EXPECT_TRUE(fs::is_symlink(settings_));
  EXPECT_EQ(parsed(target)["size"], 1);
  // Replaced, not overwritten: whoever had it open still reads the old contents.
  EXPECT_EQ(std::string(std::istreambuf_iterator(settings), {}), "{}");
  EXPECT_EQ(std::string(std::istreambuf_iterator(session), {}), "{ }");
}

TEST_F(FileUserDefaultsTest, AFileThatIsNoObjectIsSetAsideAndNeverLost) {
  for (const auto& file : {settings_, session_}) {
    for (const std::string suffix : {".bad", ".bad.1", ".bad.2"}) {
      put(file, "[" + suffix);
      EXPECT_EQ(open().value("size"), std::nullopt);
      EXPECT_FALSE(fs::exists(file));
      EXPECT_EQ(contentsOf(file.native() + suffix), "[" + suffix);
      EXPECT_TRUE(warnings().back().contains(file.filename().native() + suffix));
    }
  }
  ASSERT_TRUE(defaults_->set("journal", 1.0, Kept::atOnce));
  EXPECT_EQ(parsed(session_)["journal"], 1);
  put(settings_, "half an edi");
  ASSERT_TRUE(defaults_->set("size", 1.0, Kept::eventually));
  EXPECT_EQ(written()["size"], 1);
  EXPECT_EQ(contentsOf(settings_.native() + ".bad.3"), "half an edi");
}

TEST_F(FileUserDefaultsTest, AFileThatCannotBeReadIsLeftAloneAndTheProgramGoesOnInMemory) {
  fs::create_directories(settings_);  // a folder where the file should be
  fs::create_directories(session_);
  auto& defaults = open();
  ASSERT_EQ(warnings().size(), 2u);
  const auto kept = defaults.set("journal", 1.0, Kept::atOnce);
  ASSERT_FALSE(kept);
  EXPECT_EQ(kept.error().sentence, warnings()[1]);
  EXPECT_EQ(defaults.value("journal"), DefaultsValue(1.0));
  EXPECT_TRUE(defaults.set("size", 2.0, Kept::eventually));
  EXPECT_EQ(defaults.value("size"), DefaultsValue(2.0));
  defaults_.reset();
  EXPECT_TRUE(fs::is_directory(settings_));
  EXPECT_TRUE(fs::is_directory(session_));
  EXPECT_EQ(warnings().size(), 2u);
}

TEST_F(FileUserDefaultsTest, AWriteThatFailsSaysSoAndTheNextOneTakesItsValueAlong) {
  const std::vector<fs::path> inTheWay{settings_.native() + ".new", session_.native() + ".new"};
  for (const auto& folder : inTheWay) fs::create_directories(folder);
  auto& defaults = open();
  EXPECT_FALSE(defaults.set("journal", 1.0, Kept::atOnce));
  EXPECT_TRUE(warnings().empty());  // the caller reports it
  for (const double size : {2.0, 3.0}) {
    EXPECT_TRUE(defaults.set("size", size, Kept::eventually));
    defaults.finish();
  }
  EXPECT_EQ(warnings().size(), 1u);  // not one every quarter of a second
  EXPECT_FALSE(fs::exists(settings_));

  for (const auto& folder : inTheWay) fs::remove(folder);
  ASSERT_TRUE(defaults.set("journal", 1.0, Kept::atOnce));  // the same value, unwritten yet
  EXPECT_EQ(parsed(session_)["journal"], 1);
  EXPECT_EQ(written(), (nlohmann::json{{"size", 3}}));
}

// Like two Pellows of one user on two displays.
TEST_F(FileUserDefaultsTest, TwoProgramsShareTheirSettingsAndNothingElse) {
  put(settings_, R"({"size": 1, "theirs": null})");
  auto& first = open();
  FileUserDefaults second({settings_, session_.parent_path() / "parked-:8.json"}, log_);
  ASSERT_TRUE(first.set("journal", 1.0, Kept::atOnce));
  ASSERT_TRUE(second.set("journal", 2.0, Kept::atOnce));
  EXPECT_EQ(parsed(session_)["journal"], 1);

  ASSERT_TRUE(second.set("size", 3.0, Kept::eventually));
  second.finish();
  ASSERT_TRUE(first.set("name", "first", Kept::eventually));
  EXPECT_EQ(written(), nlohmann::json::parse(R"({"size": 3, "theirs": null, "name": "first"})"));
  EXPECT_EQ(first.value("size"), DefaultsValue(1.0)) << "it goes by what it has read";
  // Of a deleted file only what this program knows can be kept.
  fs::remove(settings_);
  ASSERT_TRUE(second.set("name", "second", Kept::eventually));
  second.finish();
  EXPECT_EQ(parsed(settings_),
            nlohmann::json::parse(R"({"size": 3, "theirs": null, "name": "second"})"));

  const auto setMany = [](FileUserDefaults& defaults, const std::string& prefix) {
    for (int number = 0; number < 50; ++number) {
      (void)defaults.set(prefix + std::to_string(number), 1.0, Kept::eventually);
      defaults.finish();
    }
  };
  std::thread atOnce([&] { setMany(first, "a"); });
  setMany(second, "b");
  atOnce.join();
  EXPECT_EQ(parsed(settings_).size(), 103u) << "both write at once";
}

TEST_F(FileUserDefaultsTest, AJournalOfAnEarlierVersionIsFoundAmongTheSettingsAndLeavesThem) {
  put(settings_, R"({"parkedWindows": {"data": "[1]"}, "size": 1})");
  auto& defaults = open();
  EXPECT_EQ(defaults.value("parkedWindows"), DefaultsValue(DefaultsData{"[1]"}));
  ASSERT_TRUE(defaults.set("parkedWindows", DefaultsData{"[]"}, Kept::atOnce));
  EXPECT_EQ(written(), (nlohmann::json{{"size", 1}}));
  EXPECT_EQ(open().value("parkedWindows"), DefaultsValue(DefaultsData{"[]"}));

  // Killed before the settings were rewritten.
  put(settings_, R"({"parkedWindows": {"data": "[1]"}})");
  EXPECT_EQ(open().value("parkedWindows"), DefaultsValue(DefaultsData{"[]"}));
}

class StandardFiles : public FileUserDefaultsTest {
 protected:
  using Environment = std::map<std::string, std::string>;

  StandardFiles() {
    for (const auto* name : names)
      if (const auto* value = std::getenv(name)) before_.emplace(name, value);
  }
  ~StandardFiles() override { setEnvironment(before_); }

  static FileUserDefaults::Files of(const Environment& environment,
                                    const std::string& display = ":7") {
    setEnvironment(environment);
    return FileUserDefaults::standardFiles(canonicalDisplayName(display));
  }

 private:
  static constexpr auto names = {"HOME", "XDG_CONFIG_HOME", "XDG_RUNTIME_DIR", "XDG_STATE_HOME"};

  static void setEnvironment(const Environment& environment) {
    for (const auto* name : names) unsetenv(name);
    for (const auto& [name, value] : environment) setenv(name.c_str(), value.c_str(), 1);
  }

  Environment before_;
};

TEST_F(StandardFiles, AreInTheFoldersOfTheUserAndOfTheSession) {
  const std::string home = "/home/me";
  for (const std::string none : {"relative", ""})
    EXPECT_EQ(of({{"HOME", home}, {"XDG_CONFIG_HOME", none}}).settings,
              "/home/me/.config/pellow/defaults.json");
  EXPECT_EQ(of({{"HOME", home}, {"XDG_CONFIG_HOME", "/c"}}).settings, "/c/pellow/defaults.json");

  EXPECT_EQ(of({{"HOME", home}, {"XDG_RUNTIME_DIR", folder_}}).session,
            folder_ / "pellow" / "parked-:7.json");
  // As it is after `su`, or in a container.
  EXPECT_EQ(of({{"HOME", home}, {"XDG_RUNTIME_DIR", "/run/user/none"}}).session,
            "/home/me/.local/state/pellow/parked-:7.json");
  EXPECT_EQ(of({{"HOME", home}, {"XDG_STATE_HOME", "/s"}}).session, "/s/pellow/parked-:7.json");
}

TEST_F(StandardFiles, AreOneForEachDisplayHoweverItIsWritten) {
  const auto name = [](const std::string& display) {
    return of({}, display).session.filename().native();
  };
  for (const auto* same : {":0", ":0.0", "unix:0", "unix:0.0"})
    EXPECT_EQ(name(same), "parked-:0.json");
  EXPECT_EQ(name(":0.1"), "parked-:0.1.json");
  EXPECT_EQ(name("localhost:10.0"), "parked-localhost:10.json");
  EXPECT_EQ(name("../%2F"), "parked-..%2F%252F.json") << "not that it could be opened";
}

}  // namespace
}  // namespace pellow
