// Between the seam's values and Foundation's objects. All total: damaged text becomes U+FFFD.
#pragma once

#import <Foundation/Foundation.h>

#include <string>
#include <string_view>

#include "platform/value.h"

namespace marbelot {

NSString* nsString(std::string_view text);
std::string utf8(NSString* text);

// The object keeps the bytes alive instead of copying them.
NSData* nsData(const SharedBytes& bytes);
SharedBytes sharedBytes(NSData* data);

// Paths keep the file system's own normalisation.
NSString* nsPath(const std::string& path);
NSURL* fileUrl(const std::string& path);

}  // namespace marbelot
