#pragma once
#include <objc/objc.h>
struct objc_method_description {
  SEL name;
  char *types;
};
typedef struct objc_method *Method;
typedef struct objc_ivar *Ivar;
typedef struct objc_property *objc_property_t;
#ifdef __OBJC__
@class Protocol;
#endif
extern "C" BOOL sel_isEqual(SEL, SEL);
