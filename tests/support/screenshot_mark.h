// Marks a file as the system's screenshot tool does.
#pragma once

#include <gtest/gtest.h>
#include <sys/xattr.h>

#include <string>

namespace marbelot {

inline void markScreenshot(const std::string& path) {
#if defined(__APPLE__) || defined(GNUSTEP)
  const char* const name = "com.apple.metadata:kMDItemIsScreenCapture";
  ASSERT_EQ(setxattr(path.c_str(), name, "1", 1, 0, 0), 0);
#else
  const char* const name = "user.com.apple.metadata:kMDItemIsScreenCapture";
  ASSERT_EQ(setxattr(path.c_str(), name, "1", 1, 0), 0);
#endif
}

}  // namespace marbelot
