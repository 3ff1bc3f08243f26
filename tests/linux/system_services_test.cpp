#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <csignal>
#include <cstring>
#include <filesystem>
#include <string>

#include "platforms/linux/system/log_sink.h"
#include "platforms/linux/system/termination_signals.h"
#include "platforms/posix/file_descriptor.h"

namespace pellow {
namespace {

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

TEST(LogSink, WritesOneLineAMessageAndTellsTheJournalToo) {
  Journal journal;
  testing::internal::CaptureStderr();
  const Log log(makeLogSink(journal.path()));
  log.warning("careful, {}", "Grüße");
  log.error("two\nlines\x1B[2J");
  log.info("\u009B2J \x9B\x90 \u00A0\u2019");
  EXPECT_EQ(testing::internal::GetCapturedStderr(),
            "warning careful, Grüße\nerror two\\nlines\\x1B[2J\n"
            "info \\x9B2J \uFFFD\uFFFD \u00A0\u2019\n");
  EXPECT_EQ(journal.receive(), "MESSAGE=careful, Grüße\nPRIORITY=4\nSYSLOG_IDENTIFIER=pellow\n");
  EXPECT_EQ(journal.receive(), std::string("MESSAGE\n\x0d\0\0\0\0\0\0\0two\nlines\x1B[2J\n", 30) +
                                   "PRIORITY=3\nSYSLOG_IDENTIFIER=pellow\n");

  testing::internal::CaptureStderr();
  Log(makeLogSink("/nowhere")).standard("without a journal");
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "default without a journal\n");
}

// How each of them ends the program is left to the desktop tests.
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
