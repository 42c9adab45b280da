/* heap.h - how the C library's heap grows and shrinks in this program. */
#pragma once

/* A solve makes and releases large arrays all the time. Called first, this keeps what was released for the next ones, instead
 * of handing it back to the system and having it zeroed again page by page. */
void heap_prepare();
