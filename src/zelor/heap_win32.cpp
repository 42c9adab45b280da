/* heap_win32.cpp - see heap.h: the system's heap has nothing of the kind to set. */
#include "heap.h"

void heap_prepare() {}
