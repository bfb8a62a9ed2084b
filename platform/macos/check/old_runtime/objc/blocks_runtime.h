#pragma once
extern "C" {
void* _Block_copy(const void*);
void _Block_release(const void*);
}
#define Block_copy(x) ((__typeof__(x))_Block_copy((const void*)(x)))
#define Block_release(x) _Block_release((const void*)(x))
