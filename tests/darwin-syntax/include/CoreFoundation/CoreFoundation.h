// Stand-in for macOS <CoreFoundation/CoreFoundation.h>: the types and calls of strings, dates,
// dictionaries, URLs and preferences that corvane uses, with their real prototypes.
#pragma once
#include <stdint.h>

typedef unsigned char Boolean;
typedef uint8_t UInt8;
typedef uint32_t UInt32;
typedef long CFIndex;
typedef unsigned long CFTypeID;
typedef double CFTimeInterval;
typedef CFTimeInterval CFAbsoluteTime;
typedef UInt32 CFStringEncoding;

typedef const void* CFTypeRef;
typedef CFTypeRef CFPropertyListRef;
typedef const struct __CFAllocator* CFAllocatorRef;
typedef const struct __CFString* CFStringRef;
typedef const struct __CFDate* CFDateRef;
typedef const struct __CFDictionary* CFDictionaryRef;
typedef struct __CFDictionary* CFMutableDictionaryRef;
typedef const struct __CFURL* CFURLRef;

typedef struct {
  CFIndex location;
  CFIndex length;
} CFRange;
inline CFRange CFRangeMake(CFIndex location, CFIndex length) { return CFRange{location, length}; }

#define kCFStringEncodingUTF8 0x08000100
#define kCFAbsoluteTimeIntervalSince1970 978307200.0

typedef struct {
  CFIndex version;
  const void* (*retain)(CFAllocatorRef allocator, const void* value);
  void (*release)(CFAllocatorRef allocator, const void* value);
  CFStringRef (*copyDescription)(const void* value);
  Boolean (*equal)(const void* value1, const void* value2);
  unsigned long (*hash)(const void* value);
} CFDictionaryKeyCallBacks;

typedef struct {
  CFIndex version;
  const void* (*retain)(CFAllocatorRef allocator, const void* value);
  void (*release)(CFAllocatorRef allocator, const void* value);
  CFStringRef (*copyDescription)(const void* value);
  Boolean (*equal)(const void* value1, const void* value2);
} CFDictionaryValueCallBacks;

extern "C" {
extern const CFAllocatorRef kCFAllocatorDefault;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;

void CFRelease(CFTypeRef cf);
CFTypeID CFGetTypeID(CFTypeRef cf);

CFTypeID CFStringGetTypeID(void);
CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8* bytes, CFIndex numBytes,
                                    CFStringEncoding encoding, Boolean isExternalRepresentation);
CFIndex CFStringGetLength(CFStringRef theString);
CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte,
                         Boolean isExternalRepresentation, UInt8* buffer, CFIndex maxBufLen, CFIndex* usedBufLen);

CFTypeID CFDateGetTypeID(void);
CFDateRef CFDateCreate(CFAllocatorRef allocator, CFAbsoluteTime at);
CFAbsoluteTime CFDateGetAbsoluteTime(CFDateRef theDate);

CFTypeID CFDictionaryGetTypeID(void);
CFIndex CFDictionaryGetCount(CFDictionaryRef theDict);
void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void** keys, const void** values);
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity,
                                                 const CFDictionaryKeyCallBacks* keyCallBacks,
                                                 const CFDictionaryValueCallBacks* valueCallBacks);
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void* key, const void* value);

CFURLRef CFCopyHomeDirectoryURL(void);
Boolean CFURLGetFileSystemRepresentation(CFURLRef url, Boolean resolveAgainstBase, UInt8* buffer, CFIndex maxBufLen);

CFPropertyListRef CFPreferencesCopyAppValue(CFStringRef key, CFStringRef applicationID);
void CFPreferencesSetAppValue(CFStringRef key, CFPropertyListRef value, CFStringRef applicationID);
Boolean CFPreferencesAppSynchronize(CFStringRef applicationID);
}
