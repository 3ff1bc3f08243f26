#include <gtest/gtest.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <vector>

#include "platforms/linux/system/file_descriptor.h"
#include "platforms/linux/system/log_sink.h"
#include "platforms/linux/system/random_uuid_source.h"
#include "platforms/linux/system/termination_signals.h"

namespace pellow {
namespace {

TEST(LogSink, WritesOneLineAMessageWhateverItHolds) {
  testing::internal::CaptureStderr();
  const Log log(makeLogSink("/nowhere"));
  log.info("Recovered {} window(s)", 3);
  log.standard("title \"{}\"", "two\nlines\x1B[2J");
  log.warning("careful");
  log.error("Grüße");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "info Recovered 3 window(s)\n"
            "default title \"two\\nlines\\x1B[2J\"\n"
            "warning careful\n"
            "error Grüße\n");
}

// A journal of the test's own.
class Journal {
 public:
  Journal() {
    std::string pattern = std::filesystem::temp_directory_path() / "pellow-journal-XXXXXX";
    folder_ = mkdtemp(pattern.data());
    sockaddr_un address{.sun_family = AF_UNIX};
    std::strcpy(address.sun_path, path().c_str());
    socket_ = FileDescriptor(socket(AF_UNIX, SOCK_DGRAM | SOCK_NONBLOCK, 0));
    EXPECT_EQ(bind(socket_.number(), reinterpret_cast<sockaddr*>(&address), sizeof address), 0);
  }
  ~Journal() { std::filesystem::remove_all(folder_); }

  std::filesystem::path path() const { return folder_ / "socket"; }
  std::string receive() {
    std::string datagram(4096, '\0');
    const auto size = recv(socket_.number(), datagram.data(), datagram.size(), 0);
    datagram.resize(size > 0 ? static_cast<std::size_t>(size) : 0);
    return datagram;
  }

 private:
  std::filesystem::path folder_;
  FileDescriptor socket_;
};

TEST(LogSink, TellsTheJournalTooWithItsPriority) {
  Journal journal;
  testing::internal::CaptureStderr();
  const Log log(makeLogSink(journal.path()));
  log.warning("careful");
  log.error("two\nlines");
  EXPECT_EQ(journal.receive(), "MESSAGE=careful\nPRIORITY=4\nSYSLOG_IDENTIFIER=pellow\n");
  EXPECT_EQ(journal.receive(), std::string("MESSAGE\n\x09\0\0\0\0\0\0\0two\nlines\n", 26) +
                                   "PRIORITY=3\nSYSLOG_IDENTIFIER=pellow\n");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "warning careful\nerror two\\nlines\n");
}

TEST(RandomUUIDSource, MakesDifferentUUIDsOfVersion4) {
  RandomUUIDSource source;
  std::set<UUID> seen;
  for (int i = 0; i < 1000; ++i) {
    const auto uuid = source.next();
    EXPECT_TRUE(seen.insert(uuid).second);
    EXPECT_EQ(uuid.text()[14], '4');
    EXPECT_TRUE(std::string("89AB").contains(uuid.text()[19])) << uuid.text();
  }
}

// Children of later tests must not inherit blocked signals.
class TerminationSignalsTest : public testing::Test {
 protected:
  TerminationSignalsTest() { pthread_sigmask(SIG_SETMASK, nullptr, &before_); }
  ~TerminationSignalsTest() override { pthread_sigmask(SIG_SETMASK, &before_, nullptr); }

 private:
  sigset_t before_;
};

TEST_F(TerminationSignalsTest, ComeAsEventsAndAreIgnoredAfterwards) {
  TerminationSignals signals;
  std::vector<std::string> story;
  auto terminate = signals.on(TerminationSignal::terminate, [&] { story.push_back("terminate"); });
  Subscription hangUp;
  hangUp = signals.on(TerminationSignal::hangUp, [&] {
    hangUp.cancel();  // a handler may drop itself
    story.push_back("hang up");
  });
  EXPECT_TRUE(story.empty());

  for (int round = 0; round < 2; ++round) {
    raise(SIGTERM);
    raise(SIGHUP);
    pollfd descriptor{signals.fileDescriptor(), POLLIN, 0};
    ASSERT_EQ(poll(&descriptor, 1, 30'000), 1);
    signals.processPending();
    EXPECT_EQ(poll(&descriptor, 1, 0), 0);
    std::ranges::sort(story);
    if (round == 0) EXPECT_EQ(story, (std::vector<std::string>{"hang up", "terminate"}));
    story.clear();
    terminate.cancel();
  }
  EXPECT_TRUE(story.empty());
}

TEST(TerminationSignalsDeathTest, EndTheProcessWhenNobodyHasEverAsked) {
  GTEST_FLAG_SET(death_test_style, "threadsafe");
  const auto receive = [] {
    TerminationSignals signals;
    raise(SIGINT);
    signals.processPending();
  };
  EXPECT_EXIT(receive(), testing::KilledBySignal(SIGINT), "");
}

}  // namespace
}  // namespace pellow
