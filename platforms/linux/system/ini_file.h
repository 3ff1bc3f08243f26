#pragma once

#include <filesystem>
#include <functional>
#include <map>
#include <string>
#include <string_view>

namespace pellow {

// The keys of a group of a settings file ("[group]", then lines "key=value") and their values as
// they are written.
using IniGroup = std::map<std::string, std::string, std::less<>>;

// An empty group stands for the whole file. White space around keys and values does not count, nor
// do lines that begin with "#"; of several lines with one key the first counts. Empty when there is
// no such file.
IniGroup readIniGroup(const std::filesystem::path& file, std::string_view group,
                      char separator = '=');

std::string value(const IniGroup& group, std::string_view key, std::string_view otherwise = {});

}  // namespace pellow
