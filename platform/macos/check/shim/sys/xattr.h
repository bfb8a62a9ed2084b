// macOS's calls take more arguments than Linux's.
#pragma once
#include <sys/types.h>
#define getxattr macos_getxattr
#define setxattr macos_setxattr
extern "C" ssize_t getxattr(const char *path, const char *name, void *value, size_t size,
                            uint32_t position, int options);
extern "C" int setxattr(const char *path, const char *name, const void *value, size_t size,
                        uint32_t position, int options);
