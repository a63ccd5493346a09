/* Runs proofs as programs, with random values in place of all, and prints a hash of what each
 * observes: the C of to_c.py and the library's own sources must give the same. */

#include <setjmp.h>
#include <stdint.h>
#include <stdio.h>
#include <stdlib.h>

#define PROOF(name) void prove_##name(void);
#include "proofs.list"
#undef PROOF

static uint64_t state, hash;
static unsigned long left_out;
static const char* running;
static jmp_buf next;

/* One third corners, one third small, one third uniform. */
static uint64_t draw(void)
{
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    const uint64_t high = state >> 33;
    switch (high % 3) {
    case 0:
        return (1ULL << (high >> 2 & 31)) * (high & 64 ? ~0ULL : 1) + (high >> 8 & 3) - 1;
    case 1:
        return (state >> 20 & 0xffff) >> (high >> 3 & 15);
    default:
        return state >> 24;
    }
}

uint8_t nondet_u8(void)
{
    return (uint8_t)draw();
}
uint16_t nondet_u16(void)
{
    return (uint16_t)draw();
}
uint32_t nondet_u32(void)
{
    return (uint32_t)draw();
}
uint64_t nondet_u64(void)
{
    return draw();
}
int16_t nondet_i16(void)
{
    return (int16_t)draw();
}
int32_t nondet_i32(void)
{
    return (int32_t)draw();
}

int32_t between(int32_t least, int32_t most)
{
    const uint64_t count = (uint64_t)((int64_t)most - least + 1);
    state = state * 6364136223846793005ULL + 1442695040888963407ULL;
    return (int32_t)(least + (int64_t)((state >> 33) % count));
}

void observe(uint32_t value)
{
    hash = (hash ^ value) * 1099511628211ULL;
}

void prove(uint8_t claim)
{
    if (claim) return;
    fprintf(stderr, "%s: a claim does not hold\n", running);
    exit(1);
}

void never(const char* what)
{
    fprintf(stderr, "%s: %s\n", running, what);
    exit(1);
}

void assume(uint8_t what)
{
    if (what) return;
    ++left_out;
    longjmp(next, 1);
}

static void run(const char* name, void (*proof)(void))
{
    enum { kRuns = 3000 };
    running = name;
    state = 1;
    hash = 14695981039346656037ULL;
    left_out = 0;
    for (volatile int i = 0; i < kRuns; ++i)
        if (setjmp(next) == 0) proof();
    printf("%s %016llx, %lu of %d left out\n", name, (unsigned long long)hash, left_out, kRuns);
    if (left_out == kRuns) exit(1);
}

int main(void)
{
#define PROOF(name) run(#name, prove_##name);
#include "proofs.list"
    return 0;
}
