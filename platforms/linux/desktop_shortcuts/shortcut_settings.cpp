#include "platforms/linux/desktop_shortcuts/shortcut_settings.h"

#include <QByteArray>
#include <QXmlStreamReader>
#include <algorithm>
#include <cctype>
#include <optional>
#include <ranges>
#include <string>
#include <utility>

#include "base/unicode.h"
#include "platforms/linux/desktop_shortcuts/accelerator.h"
#include "platforms/linux/system/ini_file.h"

namespace pellow {
namespace {

using Shortcuts = std::vector<DesktopShortcut>;

// Without a modifier it cannot be one of the program's too, and may be a word like "disabled".
void add(Shortcuts& shortcuts, std::string_view keys, const std::string& feature) {
  const auto accelerator = parseAccelerator(trimmed(keys));
  if (accelerator && accelerator->modifierFlags != 0)
    shortcuts.push_back({accelerator->key, accelerator->modifierFlags, feature});
}

// "switch-to-workspace-1" and "GoToDesktop" as words: "Switch to workspace 1", "Go to desktop".
std::string words(std::string_view identifier) {
  std::string text;
  for (const char each : identifier) {
    const auto letter = static_cast<unsigned char>(each);
    if (std::isupper(letter) && !text.empty() && text.back() != ' ') text += ' ';
    const bool isFirst = text.empty();
    text += static_cast<char>(each == '-' || each == '_' ? ' '
                              : isFirst                  ? std::toupper(letter)
                                                         : std::tolower(letter));
  }
  return text;
}

std::string command(std::string_view line) {
  return line.empty() ? std::string() : "the command “" + std::string(line) + "”";
}

std::string_view withoutEnd(std::string_view text, std::string_view end) {
  if (text.ends_with(end)) text.remove_suffix(end.size());
  return text;
}

std::vector<std::string_view> linesOf(std::string_view text) {
  std::vector<std::string_view> lines;
  for (const auto line : std::views::split(text, '\n'))
    lines.push_back(trimmed(std::string_view(line.begin(), line.end())));
  return lines;
}

// The text up to the next separator, taken from the rest with it.
std::string_view takeUntil(std::string_view& rest, std::string_view separator) {
  const auto end = std::min(rest.find(separator), rest.size());
  const auto taken = rest.substr(0, end);
  rest.remove_prefix(std::min(end + separator.size(), rest.size()));
  return taken;
}

// The texts between quotation marks.
std::vector<std::string_view> quoted(std::string_view value) {
  std::vector<std::string_view> texts;
  while (takeUntil(value, "'"), !value.empty()) texts.push_back(takeUntil(value, "'"));
  return texts;
}

QXmlStreamReader reader(std::string_view xml) {
  return QXmlStreamReader(QByteArray(xml.data(), static_cast<qsizetype>(xml.size())));
}

std::string attribute(const QXmlStreamReader& xml, const char* name) {
  return xml.attributes().value(QLatin1String(name)).toString().toStdString();
}

// The feature of one property of Xfce's list: the window manager's own, or what is started.
std::string xfceFeature(const std::string& provider, const std::string& value) {
  return provider == "commands" ? command(value) : words(withoutEnd(value, "_key"));
}

// The children of "default" or "custom".
void readXfceGroup(QXmlStreamReader& xml, const std::string& provider, bool isCustom,
                   XfceShortcuts& found) {
  while (xml.readNextStartElement()) {
    const auto name = attribute(xml, "name");
    const auto value = attribute(xml, "value");
    if (name == "override")
      found.isWhole |= isCustom && value == "true";
    else if (!value.empty())
      add(found.shortcuts, name, xfceFeature(provider, value));
    xml.skipCurrentElement();
  }
}

// What the first action of a binding does, in words.
std::string openboxFeature(QXmlStreamReader& xml) {
  const auto action = attribute(xml, "name");
  std::string detail;
  while (xml.readNextStartElement()) {
    const bool tells = xml.name() == u"command" || xml.name() == u"execute" ||
                       xml.name() == u"to" || xml.name() == u"desktop";
    if (tells && detail.empty())
      detail = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
    else
      xml.skipCurrentElement();
  }
  if (action == "Execute") return command(detail);
  return words(action) + (detail.empty() ? "" : " " + detail);
}

// In a chain of keys only the first is reserved.
void readOpenboxBinding(QXmlStreamReader& xml, Shortcuts& found) {
  const auto keys = attribute(xml, "key");
  std::optional<std::string> feature;
  while (xml.readNextStartElement()) {
    if (xml.name() == u"action" && !feature)
      feature = openboxFeature(xml);
    else
      xml.skipCurrentElement();
  }
  add(found, keys, feature.value_or(""));
}

// The fields of a value, which commas separate unless a backslash is before them.
std::vector<std::string> fieldsOf(std::string_view value) {
  std::vector<std::string> fields(1);
  for (std::size_t i = 0; i < value.size(); ++i) {
    if (value.substr(i).starts_with("\\,"))
      fields.back() += value[++i];
    else if (value[i] == ',')
      fields.emplace_back();
    else
      fields.back() += value[i];
  }
  return fields;
}

}  // namespace

std::vector<DesktopShortcut> shortcutsOfGSettings(std::string_view listing) {
  std::string ownName;
  Shortcuts found;
  for (auto line : linesOf(listing)) {
    takeUntil(line, " ");
    const auto key = takeUntil(line, " ");
    const auto texts = quoted(line);
    if (key == "name" && !texts.empty()) ownName = texts.front();
    for (const auto text : texts)
      add(found, text, key == "binding" ? std::string(key) : words(withoutEnd(key, "-static")));
  }
  for (auto& shortcut : found)
    if (shortcut.feature == "binding") shortcut.feature = ownName;
  return found;
}

XfceShortcuts shortcutsOfXfce(std::string_view text) {
  XfceShortcuts found;
  auto xml = reader(text);
  if (!xml.readNextStartElement()) return found;
  while (xml.readNextStartElement()) {
    const auto provider = attribute(xml, "name");
    while (xml.readNextStartElement())
      readXfceGroup(xml, provider, attribute(xml, "name") == "custom", found);
  }
  return found;
}

std::vector<DesktopShortcut> shortcutsOfOpenbox(std::string_view text) {
  Shortcuts found;
  auto xml = reader(text);
  if (!xml.readNextStartElement()) return found;
  while (xml.readNextStartElement()) {
    if (xml.name() != u"keyboard") {
      xml.skipCurrentElement();
      continue;
    }
    while (xml.readNextStartElement()) {
      if (xml.name() == u"keybind")
        readOpenboxBinding(xml, found);
      else
        xml.skipCurrentElement();
    }
  }
  return found;
}

std::vector<DesktopShortcut> shortcutsOfKDE(std::string_view ini) {
  Shortcuts found;
  std::string group;
  for (auto line : linesOf(ini)) {
    if (line.starts_with('[')) {
      const auto last = line.rfind('[');
      group = withoutEnd(withoutEnd(line.substr(last + 1), "]"), ".desktop");
      continue;
    }
    const auto key = takeUntil(line, "=");
    if (key == "_k_friendly_name") continue;
    const auto fields = fieldsOf(line);
    const auto& name = fields.size() > 2      ? fields.back()
                       : key.starts_with('_') ? group
                                              : std::string(key);
    std::string_view active = fields.front();
    while (!active.empty()) add(found, takeUntil(active, "\\t"), name);
  }
  return found;
}

}  // namespace pellow
