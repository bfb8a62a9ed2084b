#include "platform/macos/conversions.h"

#include "platform/macos/utf16.h"

namespace marbelot {

NSString* nsString(std::string_view text) {
  // Most large texts are plain ASCII, which the system keeps as it is.
  unsigned char any = 0;
  for (const char byte : text) any |= static_cast<unsigned char>(byte);
  if (any < 0x80)
    return [[NSString alloc] initWithBytes:text.data()
                                    length:text.size()
                                  encoding:NSASCIIStringEncoding];
  // Not initWithBytes:, which gives nil for damaged text and swallows a byte order mark.
  const std::u16string units = toUtf16(text);
  return [[NSString alloc] initWithCharacters:reinterpret_cast<const unichar*>(units.data())
                                       length:units.size()];
}

std::string utf8(NSString* text) {
  // Not UTF8String, which gives null for half a surrogate pair and ends at U+0000.
  std::u16string units(text.length, u'\0');
  [text getCharacters:reinterpret_cast<unichar*>(units.data()) range:NSMakeRange(0, units.size())];
  return fromUtf16(units);
}

NSData* nsData(const SharedBytes& bytes) {
  const SharedBytes kept = bytes;
  return [[NSData alloc] initWithBytesNoCopy:const_cast<char*>(kept->data())
                                      length:kept->size()
                                 deallocator:^(void*, NSUInteger) {
                                   // Capturing is what keeps the bytes alive.
                                   (void)kept;
                                 }];
}

SharedBytes sharedBytes(NSData* data) {
  if (data == nil) return nullptr;
  return share(std::string(static_cast<const char*>(data.bytes), data.length));
}

NSString* nsPath(const std::string& path) {
  return [NSFileManager.defaultManager stringWithFileSystemRepresentation:path.data()
                                                                   length:path.size()];
}

NSURL* fileUrl(const std::string& path) { return [NSURL fileURLWithPath:nsPath(path)]; }

}  // namespace marbelot
