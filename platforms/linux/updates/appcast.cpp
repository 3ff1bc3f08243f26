#include "platforms/linux/updates/appcast.h"

#include <fmt/format.h>

#include <QXmlStreamReader>
#include <utility>

#include "platforms/linux/updates/version_order.h"

namespace pellow {

namespace {

constexpr QLatin1String sparkle("http://www.andymatuschak.org/xml-namespaces/sparkle");

class AppcastReader {
 public:
  AppcastReader(std::string_view xml, AppcastLinks links)
      : reader_(QByteArray(xml.data(), static_cast<qsizetype>(xml.size()))), links_(links) {}

  std::expected<std::optional<AppcastItem>, SystemError> read();

 private:
  void readChannel();
  void readItem();
  void readEnclosure(AppcastItem& item, std::string& file, bool& isForOthers);
  void consider(AppcastItem item, std::string file);

  bool isSparkle(QLatin1String name) const {
    return reader_.namespaceUri() == sparkle && reader_.name() == name;
  }
  std::string readText() {
    return reader_.readElementText(QXmlStreamReader::SkipChildElements).trimmed().toStdString();
  }
  std::string readAddress() {
    auto text = readText();
    return isAddress(text) ? std::move(text) : std::string();
  }
  bool isAddress(std::string_view text) const {
    return text.starts_with("https://") ||
           (links_ == AppcastLinks::httpAndHttps && text.starts_with("http://"));
  }

  QXmlStreamReader reader_;
  const AppcastLinks links_;
  std::string channelPage_;
  std::optional<AppcastItem> newest_;
  std::string newestFile_;
};

std::expected<std::optional<AppcastItem>, SystemError> AppcastReader::read() {
  bool isFeed = false;
  if (reader_.readNextStartElement() && reader_.name() == QLatin1String("rss")) {
    isFeed = true;
    while (reader_.readNextStartElement()) {
      if (reader_.name() == QLatin1String("channel"))
        readChannel();
      else
        reader_.skipCurrentElement();
    }
  }
  if (reader_.hasError())
    return std::unexpected(
        SystemError{fmt::format("The update feed is broken in line {}: {}.", reader_.lineNumber(),
                                reader_.errorString().toStdString())});
  if (!isFeed) return std::unexpected(SystemError{"The update feed is no RSS feed."});
  if (newest_ && newest_->page.empty())
    newest_->page = channelPage_.empty() ? newestFile_ : channelPage_;
  return newest_;
}

void AppcastReader::readChannel() {
  while (reader_.readNextStartElement()) {
    if (reader_.name() == QLatin1String("item"))
      readItem();
    else if (reader_.name() == QLatin1String("link") && reader_.namespaceUri().isEmpty())
      channelPage_ = readAddress();
    else
      reader_.skipCurrentElement();
  }
}

void AppcastReader::readItem() {
  AppcastItem item;
  std::string file;
  bool isForOthers = false;
  while (reader_.readNextStartElement()) {
    if (isSparkle(QLatin1String("version")))
      item.version = readText();
    else if (isSparkle(QLatin1String("shortVersionString")))
      item.displayVersion = readText();
    else if (isSparkle(QLatin1String("channel")))
      isForOthers |= !readText().empty();
    else if (reader_.name() == QLatin1String("link") && reader_.namespaceUri().isEmpty())
      item.page = readAddress();
    else if (reader_.name() == QLatin1String("description") && reader_.namespaceUri().isEmpty())
      item.notes = readText();
    else if (reader_.name() == QLatin1String("enclosure"))
      readEnclosure(item, file, isForOthers);
    else
      reader_.skipCurrentElement();
  }
  if (!isForOthers) consider(std::move(item), std::move(file));
}

// Older feeds give the versions here.
void AppcastReader::readEnclosure(AppcastItem& item, std::string& file, bool& isForOthers) {
  const auto attributes = reader_.attributes();
  const auto text = [&](const char* name) {
    return attributes.value(sparkle, QLatin1String(name)).toString().toStdString();
  };
  const auto system = text("os");
  isForOthers |= !system.empty() && system != "linux";
  if (item.version.empty()) item.version = text("version");
  if (item.displayVersion.empty()) item.displayVersion = text("shortVersionString");
  if (auto address = attributes.value(QLatin1String("url")).toString().toStdString();
      isAddress(address))
    file = std::move(address);
  reader_.skipCurrentElement();
}

void AppcastReader::consider(AppcastItem item, std::string file) {
  if (item.version.empty()) item.version = item.displayVersion;
  if (item.displayVersion.empty()) item.displayVersion = item.version;
  if (item.version.empty()) return;
  if (newest_ && compareVersions(item.version, newest_->version) <= 0) return;
  newest_ = std::move(item);
  newestFile_ = std::move(file);
}

}  // namespace

std::expected<std::optional<AppcastItem>, SystemError> newestInAppcast(std::string_view xml,
                                                                       AppcastLinks links) {
  return AppcastReader(xml, links).read();
}

}  // namespace pellow
