/* sysatomic.h - an array of counters that several threads may step at once. */
#ifndef CPUB_SYSATOMIC_H
#define CPUB_SYSATOMIC_H

#include "cpub/sysenv.h"

#ifdef __cplusplus
extern "C" {
#endif

typedef struct sysatomic {
    sysenv *sys; /* made through it, given back through it */
    int32_t count;
    int32_t *counters; /* equal to raw */
    void *raw;         /* count + 1 counters; the last is never used */
} sysatomic;

/* `count` counters at 0. Null without memory. */
sysatomic *sysatomic_create(sysenv *sys, int32_t count);

/* Sets the pointer to null; no-op for a null record. */
void sysatomic_delete(sysatomic **atomic);

/* Step a counter and return its new value. Sequentially consistent, and all that may race on the record. The index is
 * not checked. */
int32_t sysatomic_inc(sysatomic *atomic, int32_t index);
int32_t sysatomic_dec(sysatomic *atomic, int32_t index);

#ifdef __cplusplus
}
#endif

#endif
