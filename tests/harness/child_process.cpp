#include "tests/harness/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

#include <stdexcept>

#include "tests/harness/eventually.h"

namespace pellow::desktop {
namespace {

// A child writes to memory, not a pipe, so that it never waits for its reader.
int makeMemoryFile(const char* name) {
  const int file = memfd_create(name, MFD_CLOEXEC);
  if (file < 0) throw std::runtime_error("cannot make a file in memory");
  return file;
}

std::string contents(int file, std::size_t from) {
  std::string text;
  char buffer[4096];
  while (true) {
    const auto count = pread(file, buffer, sizeof buffer, static_cast<off_t>(from + text.size()));
    if (count <= 0) return text;
    text.append(buffer, static_cast<std::size_t>(count));
  }
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
  std::vector<char*> result;
  for (auto& text : texts) result.push_back(text.data());
  result.push_back(nullptr);
  return result;
}

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command,
                           const Environment& environment) {
  int pipe[2];
  if (pipe2(pipe, O_CLOEXEC) != 0) throw std::runtime_error("cannot make a pipe");
  input_ = pipe[1];
  output_ = makeMemoryFile("stdout");
  error_ = makeMemoryFile("stderr");

  auto arguments = command;
  std::vector<std::string> variables;
  for (const auto& [name, value] : environment) variables.push_back(name + "=" + value);
  const auto argumentPointers = pointers(arguments);
  const auto variablePointers = pointers(variables);
  const pid_t parent = getpid();

  pid_ = fork();
  if (pid_ < 0) throw std::runtime_error("cannot fork");
  if (pid_ == 0) {
    setpgid(0, 0);
    prctl(PR_SET_PDEATHSIG, SIGKILL);
    if (getppid() != parent) _exit(127);
    sigset_t none;  // the test may have blocked some
    sigemptyset(&none);
    sigprocmask(SIG_SETMASK, &none, nullptr);
    dup2(pipe[0], STDIN_FILENO);
    dup2(output_, STDOUT_FILENO);
    dup2(error_, STDERR_FILENO);
    execvpe(argumentPointers[0], argumentPointers.data(), variablePointers.data());
    _exit(127);
  }
  setpgid(pid_, pid_);
  close(pipe[0]);
}

ChildProcess::~ChildProcess() {
  kill();
  close(input_);
  close(output_);
  close(error_);
}

bool ChildProcess::isRunning() {
  collect(WNOHANG);
  return !status_;
}

void ChildProcess::send(int signal) const {
  if (!status_) ::kill(pid_, signal);
}

std::optional<int> ChildProcess::exitStatus() {
  (void)eventually([this] { return !isRunning(); });
  return status_;
}

void ChildProcess::kill() {
  ::kill(-pid_, SIGKILL);
  collect(0);
}

void ChildProcess::writeLine(std::string_view line) const {
  std::string text(line);
  text += '\n';
  if (write(input_, text.data(), text.size()) != static_cast<ssize_t>(text.size()))
    throw std::runtime_error("a child process does not read");
}

std::optional<std::string> ChildProcess::readLine() {
  std::string text;
  std::size_t end = std::string::npos;
  const bool complete = eventually([&] {
    const bool running = isRunning();
    text = contents(output_, outputRead_);
    end = text.find('\n');
    return end != std::string::npos || !running;
  });
  if (!complete || end == std::string::npos) return std::nullopt;
  outputRead_ += end + 1;
  return text.substr(0, end);
}

std::string ChildProcess::standardError() const { return contents(error_, 0); }

void ChildProcess::collect(int options) {
  if (status_) return;
  int status = 0;
  if (waitpid(pid_, &status, options) != pid_) return;
  status_ = WIFSIGNALED(status) ? 128 + WTERMSIG(status) : WEXITSTATUS(status);
}

}  // namespace pellow::desktop
