// Puts a block in the place of a method as long as it lives.
#pragma once

#include <objc/runtime.h>

namespace marbelot {

class ReplacedMethod {
 public:
  ReplacedMethod(Class owner, SEL name, id block)
      : method_(class_getInstanceMethod(owner, name)),
        former_(method_setImplementation(method_, imp_implementationWithBlock(block))) {}
  ~ReplacedMethod() { method_setImplementation(method_, former_); }
  ReplacedMethod(const ReplacedMethod&) = delete;
  ReplacedMethod& operator=(const ReplacedMethod&) = delete;

 private:
  Method method_;
  IMP former_;
};

}  // namespace marbelot
