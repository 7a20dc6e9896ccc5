// The suite is a property-list file under the user's configuration directory. It is read in either
// property-list form and always written as XML, through a temporary file renamed over the old one so
// that the desktop app never sees half a file.
#include "platform/defaults.h"
#include "platform/posix/defaults_writes.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <fcntl.h>
#include <filesystem>
#include <limits>
#include <utility>
#include <sys/stat.h>
#include <unistd.h>

#include "platform/paths.h"
#include "platform/property_list.h"

namespace corvane::platform {

namespace {

// Seconds between 1970-01-01 and 2001-01-01, the epoch of property-list dates.
constexpr int64_t referenceEpoch = 978307200;

enum class FileState { missing, unreadable, read };

FileState readWholeFile(const std::string& path, std::string& contents) {
  const int fd = open(path.c_str(), O_RDONLY | O_CLOEXEC);
  if (fd < 0) return errno == ENOENT ? FileState::missing : FileState::unreadable;
  char buffer[16384];
  FileState state = FileState::read;
  for (;;) {
    const ssize_t n = read(fd, buffer, sizeof buffer);
    if (n == 0) break;
    if (n < 0) {
      if (errno == EINTR) continue;
      state = FileState::unreadable;
      break;
    }
    contents.append(buffer, static_cast<size_t>(n));
  }
  close(fd);
  return state;
}

Date dateFromNode(plist_t node) {
  int32_t seconds = 0;
  int32_t micros = 0;
  plist_get_date_val(node, &seconds, &micros);
  return Date(std::chrono::seconds(referenceEpoch + seconds) + std::chrono::microseconds(micros));
}

plist_t nodeFromDate(Date date) {
  using namespace std::chrono;
  const auto sinceReference = date.time_since_epoch() - duration_cast<microseconds>(seconds(referenceEpoch));
  auto whole = floor<seconds>(sinceReference);
  auto micros = duration_cast<microseconds>(sinceReference - whole).count();
  int64_t secs = whole.count();
  // Property-list dates of this library hold 32-bit seconds: past 2069 the date saturates.
  if (secs > std::numeric_limits<int32_t>::max()) secs = std::numeric_limits<int32_t>::max(), micros = 0;
  if (secs < std::numeric_limits<int32_t>::min()) secs = std::numeric_limits<int32_t>::min(), micros = 0;
  return plist_new_date(static_cast<int32_t>(secs), static_cast<int32_t>(micros));
}

DefaultsValue valueFromNode(plist_t node) {
  switch (plist_get_node_type(node)) {
    case PLIST_STRING: {
      auto text = plistString(node);
      if (!text) return std::monostate{};
      return std::move(*text);
    }
    case PLIST_DATE:
      return dateFromNode(node);
    default:
      return std::monostate{};
  }
}

DefaultsDictionary dictionaryFromNode(plist_t dict) {
  DefaultsDictionary result;
  plist_dict_iter iter = nullptr;
  plist_dict_new_iter(dict, &iter);
  if (!iter) return result;
  for (;;) {
    char* key = nullptr;
    plist_t value = nullptr;
    plist_dict_next_item(dict, iter, &key, &value);
    if (!value) {
      std::free(key);
      break;
    }
    if (key) result.emplace(key, valueFromNode(value));
    std::free(key);
  }
  std::free(iter);
  return result;
}

plist_t nodeFromDictionary(const DefaultsDictionary& dictionary) {
  plist_t dict = plist_new_dict();
  for (const auto& [key, value] : dictionary) {
    if (key.find('\0') != std::string::npos) continue;  // libplist would cut it short
    if (const auto* text = std::get_if<std::string>(&value)) {
      plist_dict_set_item(dict, key.c_str(), plist_new_string(text->c_str()));
    } else if (const auto* date = std::get_if<Date>(&value)) {
      plist_dict_set_item(dict, key.c_str(), nodeFromDate(*date));
    }
  }
  return dict;
}

bool writeAll(int fd, const char* data, size_t size) {
  while (size > 0) {
    const ssize_t n = write(fd, data, size);
    if (n < 0) {
      if (errno == EINTR) continue;
      return false;
    }
    data += n;
    size -= static_cast<size_t>(n);
  }
  return true;
}

bool replaceFileAtomically(const std::string& path, const char* data, size_t size) {
  std::error_code ignored;
  std::filesystem::create_directories(std::filesystem::path(path).parent_path(), ignored);
  std::string temporary = path + ".XXXXXX";
  const int fd = mkostemp(temporary.data(), O_CLOEXEC);
  if (fd < 0) return false;
  const bool written = writeAll(fd, data, size) && fsync(fd) == 0;
  const bool closed = close(fd) == 0;
  if (!written || !closed || rename(temporary.c_str(), path.c_str()) != 0) {
    unlink(temporary.c_str());
    return false;
  }
  return true;
}

}  // namespace

DefaultsStore DefaultsStore::appSuite() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const std::string directory = config && *config == '/' ? std::string(config) : homeDirectory() + "/.config";
  return DefaultsStore(directory + "/" CORVANE_SUITE ".plist");
}

std::optional<DefaultsDictionary> DefaultsStore::readDictionary(const std::string& key) const {
  std::string contents;
  if (readWholeFile(file_, contents) != FileState::read) return std::nullopt;
  const PlistTree root = parsePlistDictionary(contents);
  if (!root) return std::nullopt;
  plist_t node = plist_dict_get_item(root.get(), key.c_str());
  if (!node || plist_get_node_type(node) != PLIST_DICT) return std::nullopt;
  return dictionaryFromNode(node);
}

bool DefaultsStore::writeDictionary(const std::string& key, const DefaultsDictionary& dictionary) const {
  const auto lock = os::defaultsWriteLock();
  if (!lock.owns_lock()) return false;
  std::string contents;
  PlistTree root;
  switch (readWholeFile(file_, contents)) {
    case FileState::unreadable:
      return false;
    case FileState::missing:
      root.reset(plist_new_dict());
      break;
    case FileState::read:
      root = contents.empty() ? PlistTree(plist_new_dict()) : parsePlistDictionary(contents);
      // Written back as XML, every key of the desktop app must come out as it went in; when one
      // would not, the suite is left alone.
      if (!root) return false;
      plist_dict_remove_item(root.get(), key.c_str());
      if (!plistSurvivesXML(root.get())) return false;
      break;
  }
  plist_dict_set_item(root.get(), key.c_str(), nodeFromDictionary(dictionary));
  char* xml = nullptr;
  uint32_t length = 0;
  plist_to_xml(root.get(), &xml, &length);
  if (!xml) return false;
  const bool replaced = replaceFileAtomically(file_, xml, length);
  plist_to_xml_free(xml);
  return replaced;
}

}  // namespace corvane::platform
