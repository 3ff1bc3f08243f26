#pragma once

#include <functional>
#include <string_view>
#include <utility>

#include <fmt/format.h>

namespace pellow {

enum class LogLevel { info, standard, warning, error };

// The way to the system log: subsystem "com.velloway.pellow", category "action". Every argument is
// public. The platform supplies the sink, which may be called on any thread.
class Log {
 public:
  using Sink = std::function<void(LogLevel, std::string_view message)>;

  explicit Log(Sink sink) : sink_(std::move(sink)) {}

  template <class... Args>
  void info(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::info, fmt::format(format, std::forward<Args>(args)...));
  }
  // The nameless level between info and error.
  template <class... Args>
  void standard(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::standard, fmt::format(format, std::forward<Args>(args)...));
  }
  template <class... Args>
  void warning(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::warning, fmt::format(format, std::forward<Args>(args)...));
  }
  template <class... Args>
  void error(fmt::format_string<Args...> format, Args&&... args) const {
    write(LogLevel::error, fmt::format(format, std::forward<Args>(args)...));
  }

 private:
  void write(LogLevel level, std::string_view message) const { sink_(level, message); }

  Sink sink_;
};

}  // namespace pellow
