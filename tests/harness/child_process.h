#pragma once

#include <sys/types.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace pellow::desktop {

using Environment = std::map<std::string, std::string>;

// A program that a test started, in a process group of its own. The group is killed with this
// object; if the test itself dies, so does the program.
class ChildProcess {
 public:
  // Starts `command[0]`, found in PATH, with exactly this environment. A program that cannot be
  // started ends at once with status 127.
  ChildProcess(const std::vector<std::string>& command, const Environment& environment);
  ~ChildProcess();
  ChildProcess(const ChildProcess&) = delete;
  ChildProcess& operator=(const ChildProcess&) = delete;

  pid_t pid() const { return pid_; }
  bool isRunning();

  void send(int signal) const;

  // Waits for the end and answers the exit status, 128 plus the signal's number if one ended it, or
  // nothing if it does not end.
  std::optional<int> exitStatus();

  // Kills the group and waits for the program's end.
  void kill();

  // Writes a line to its standard input.
  void writeLine(std::string_view line) const;

  // Waits for the next line of its standard output; nothing when none comes.
  std::optional<std::string> readLine();

  // What it has written to standard error so far.
  std::string standardError() const;

 private:
  void collect(int options);

  pid_t pid_ = -1;
  std::optional<int> status_;
  int input_ = -1;
  int output_ = -1;
  int error_ = -1;
  std::size_t outputRead_ = 0;
};

}  // namespace pellow::desktop
