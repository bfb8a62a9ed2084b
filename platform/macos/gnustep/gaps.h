// What GNUstep lacks of macOS, as far as the backend uses it: enough to run the backend on Linux as
// it is. Each piece does what the system's does, in the simplest way, or says what it leaves out.
#pragma once

#import <Foundation/Foundation.h>
#include <objc/runtime.h>

// Some of what the headers of the gaps declare GNUstep has, only undeclared; the backend's use of
// it is checked against them all the same. Some it declares, and does not have.
#pragma clang diagnostic ignored "-Wincomplete-implementation"
#pragma clang diagnostic ignored "-Wobjc-protocol-method-implementation"

// Puts `replacement` in the place of a method, and gives what stood there.
template <class Function>
Function replace(Class owner, SEL name, Function replacement) {
  Method const method = class_getInstanceMethod(owner, name);
  return reinterpret_cast<Function>(
      method_setImplementation(method, reinterpret_cast<IMP>(replacement)));
}

inline void attach(id object, const void* key, id value) {
  objc_setAssociatedObject(object, key, value, OBJC_ASSOCIATION_RETAIN);
}
