// The suite is a property-list file under the user's configuration directory. It is read in either
// property-list form and always written as XML, through a temporary file renamed over the old one so
// that the desktop app never sees half a file.
#include "platform/defaults.h"
#include "platform/posix/defaults_writes.h"

#include <cstdlib>
#include <limits>
#include <utility>

#include "platform/files.h"
#include "platform/paths.h"
#include "platform/property_list.h"

namespace corvane::platform {

namespace {

Date dateFromNode(plist_t node) {
  int32_t seconds = 0;
  int32_t micros = 0;
  plist_get_date_val(node, &seconds, &micros);
  return Date(std::chrono::seconds(referenceDateSince1970 + seconds) + std::chrono::microseconds(micros));
}

plist_t nodeFromDate(Date date) {
  using namespace std::chrono;
  const auto sinceReference = date.time_since_epoch() - duration_cast<microseconds>(seconds(referenceDateSince1970));
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

}  // namespace

DefaultsStore DefaultsStore::appSuite() {
  const char* config = std::getenv("XDG_CONFIG_HOME");
  const std::string directory = config && *config == '/' ? std::string(config) : homeDirectory() + "/.config";
  return DefaultsStore(directory + "/" CORVANE_SUITE ".plist");
}

std::optional<DefaultsDictionary> DefaultsStore::readDictionary(const std::string& key) const {
  const auto contents = readFile(file_, maxPlistBytes);
  if (!contents) return std::nullopt;
  const PlistTree root = parsePlistDictionary(*contents);
  if (!root) return std::nullopt;
  plist_t node = plist_dict_get_item(root.get(), key.c_str());
  if (!node || plist_get_node_type(node) != PLIST_DICT) return std::nullopt;
  return dictionaryFromNode(node);
}

bool DefaultsStore::writeDictionary(const std::string& key, const DefaultsDictionary& dictionary) const {
  const auto lock = os::defaultsWriteLock();
  if (!lock.owns_lock()) return false;
  const FileContents contents = readWholeFile(file_, maxPlistBytes);
  PlistTree root;
  switch (contents.state) {
    case FileState::unreadable:
      return false;
    case FileState::missing:
      root.reset(plist_new_dict());
      break;
    case FileState::read:
      root = contents.bytes.empty() ? PlistTree(plist_new_dict()) : parsePlistDictionary(contents.bytes);
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
  const std::string_view bytes(xml, length);
  // Most runs write back what is there: rewriting it would cost an fsync and race the other writers
  // for nothing.
  const bool replaced = (contents.state == FileState::read && contents.bytes == bytes) ||
                        replaceFileAtomically(file_, bytes, FileAccess::ownerOnly);
  plist_to_xml_free(xml);
  return replaced;
}

}  // namespace corvane::platform
