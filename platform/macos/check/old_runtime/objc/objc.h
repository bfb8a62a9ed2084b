// Stands in for <objc/objc.h>, whose GNU version does not go with ARC and blocks.
#pragma once
#define __GNU_LIBOBJC__ 20110608
#include <stddef.h>
#include <stdint.h>
#include <stdlib.h>
#include <string.h>
typedef struct objc_class* Class;
struct objc_object {
  Class isa;
};
typedef struct objc_object* id;
typedef struct objc_selector* SEL;
typedef id (*IMP)(id, SEL, ...);
typedef bool BOOL;  // as on Apple silicon
#define YES __objc_yes
#define NO __objc_no
#ifndef nil
#define nil nullptr
#endif
#ifndef Nil
#define Nil nullptr
#endif
