// The desktop app's suite through CFPreferences, so that this program and the app go through the
// same preferences daemon and never overwrite each other's copy of the file. A store named by an
// absolute path (tests name their own) is the property-list file at that path: CFPreferences takes
// such a path as a domain of its own, to which it adds ".plist" itself.
#include "platform/defaults.h"
#include "platform/posix/defaults_writes.h"

#include <CoreFoundation/CoreFoundation.h>
#include <memory>
#include <string_view>
#include <type_traits>
#include <vector>

namespace corvane::platform {

namespace {

struct Releaser {
  void operator()(CFTypeRef object) const { CFRelease(object); }
};
// A Core Foundation object this code created or copied, released at the end of its scope.
template <typename Ref>
using Owned = std::unique_ptr<std::remove_pointer_t<Ref>, Releaser>;

// Absent for text that is not UTF-8.
Owned<CFStringRef> makeString(std::string_view text) {
  return Owned<CFStringRef>(CFStringCreateWithBytes(kCFAllocatorDefault, reinterpret_cast<const UInt8*>(text.data()),
                                                    static_cast<CFIndex>(text.size()), kCFStringEncodingUTF8, false));
}

std::string textOf(CFStringRef string) {
  const CFRange whole = CFRangeMake(0, CFStringGetLength(string));
  CFIndex length = 0;
  CFStringGetBytes(string, whole, kCFStringEncodingUTF8, 0, false, nullptr, 0, &length);
  std::string text(static_cast<size_t>(length), '\0');
  CFStringGetBytes(string, whole, kCFStringEncodingUTF8, 0, false, reinterpret_cast<UInt8*>(text.data()), length,
                   &length);
  text.resize(static_cast<size_t>(length));
  return text;
}

DefaultsValue valueOf(CFTypeRef value) {
  if (CFGetTypeID(value) == CFStringGetTypeID()) return textOf(static_cast<CFStringRef>(value));
  if (CFGetTypeID(value) == CFDateGetTypeID()) {
    const auto date = dateFromReferenceSeconds(CFDateGetAbsoluteTime(static_cast<CFDateRef>(value)));
    if (date) return *date;
  }
  return std::monostate{};
}

// Absent for values of the types the suite doesn't hold for corvane.
Owned<CFTypeRef> makeValue(const DefaultsValue& value) {
  if (const auto* text = std::get_if<std::string>(&value)) return Owned<CFTypeRef>(makeString(*text).release());
  if (const auto* date = std::get_if<Date>(&value))
    return Owned<CFTypeRef>(CFDateCreate(kCFAllocatorDefault, secondsSinceReferenceDate(*date)));
  return nullptr;
}

std::string_view domainOf(std::string_view name) {
  constexpr std::string_view extension = ".plist";
  if (name.starts_with('/') && name.ends_with(extension)) name.remove_suffix(extension.size());
  return name;
}

}  // namespace

DefaultsStore DefaultsStore::appSuite() { return DefaultsStore(CORVANE_SUITE); }

std::optional<DefaultsDictionary> DefaultsStore::readDictionary(const std::string& key) const {
  const Owned<CFStringRef> domain = makeString(domainOf(file_));
  const Owned<CFStringRef> name = makeString(key);
  if (!domain || !name) return std::nullopt;
  const Owned<CFPropertyListRef> stored(CFPreferencesCopyAppValue(name.get(), domain.get()));
  if (!stored || CFGetTypeID(stored.get()) != CFDictionaryGetTypeID()) return std::nullopt;
  const auto dictionary = static_cast<CFDictionaryRef>(stored.get());
  const CFIndex count = CFDictionaryGetCount(dictionary);
  std::vector<const void*> keys(static_cast<size_t>(count));
  std::vector<const void*> values(static_cast<size_t>(count));
  CFDictionaryGetKeysAndValues(dictionary, keys.data(), values.data());
  DefaultsDictionary result;
  for (size_t i = 0; i < keys.size(); ++i) {
    if (CFGetTypeID(keys[i]) != CFStringGetTypeID()) continue;
    result.emplace(textOf(static_cast<CFStringRef>(keys[i])), valueOf(values[i]));
  }
  return result;
}

bool DefaultsStore::writeDictionary(const std::string& key, const DefaultsDictionary& dictionary) const {
  const auto lock = os::defaultsWriteLock();
  if (!lock.owns_lock()) return false;
  const Owned<CFStringRef> domain = makeString(domainOf(file_));
  const Owned<CFStringRef> name = makeString(key);
  const Owned<CFMutableDictionaryRef> stored(CFDictionaryCreateMutable(
      kCFAllocatorDefault, 0, &kCFTypeDictionaryKeyCallBacks, &kCFTypeDictionaryValueCallBacks));
  if (!domain || !name || !stored) return false;
  for (const auto& [entryKey, entryValue] : dictionary) {
    const Owned<CFStringRef> entryName = makeString(entryKey);
    const Owned<CFTypeRef> value = makeValue(entryValue);
    if (entryName && value) CFDictionarySetValue(stored.get(), entryName.get(), value.get());
  }
  CFPreferencesSetAppValue(name.get(), stored.get(), domain.get());
  return CFPreferencesAppSynchronize(domain.get());
}

}  // namespace corvane::platform
