// macOS's getxattr takes two arguments more than Linux's.
#pragma once
#include <sys/types.h>
extern "C" ssize_t getxattr(const char *path, const char *name, void *value, size_t size,
                            uint32_t position, int options);
