/* What the C stands on that translate/to_c.py makes: words, vectors, generic operations, and one
 * model per instruction of the processor. The models are tested against the processor itself.
 *
 * Under cbmc nondet_X() is any value, assume() restricts what follows, prove() and never() are
 * claims. Elsewhere the includer defines these functions. */
#ifndef ZSP_PROOFS_MODELS_H
#define ZSP_PROOFS_MODELS_H

#include <stddef.h>
#include <stdint.h>
#include <string.h>

typedef uint8_t u8;
typedef uint16_t u16;
typedef uint32_t u32;
typedef uint64_t u64;
typedef int8_t i8;
typedef int16_t i16;
typedef int32_t i32;
typedef int64_t i64;

#define ZSP_VECTOR(count, word)                                                                    \
    typedef struct {                                                                               \
        word v[count];                                                                             \
    } v##count##of##word
ZSP_VECTOR(2, u32);
ZSP_VECTOR(2, u64);
ZSP_VECTOR(2, u8);
ZSP_VECTOR(4, u8);
ZSP_VECTOR(4, u16);
ZSP_VECTOR(4, u32);
ZSP_VECTOR(4, u64);
ZSP_VECTOR(6, u16);
ZSP_VECTOR(8, u8);
ZSP_VECTOR(8, u16);
ZSP_VECTOR(8, u32);
ZSP_VECTOR(8, u64);
ZSP_VECTOR(16, u8);
ZSP_VECTOR(16, u16);
ZSP_VECTOR(16, u32);
ZSP_VECTOR(16, u64);
ZSP_VECTOR(32, u8);
ZSP_VECTOR(32, u16);
ZSP_VECTOR(32, u32);

u8 nondet_u8(void);
u16 nondet_u16(void);
u32 nondet_u32(void);
u64 nondet_u64(void);
i16 nondet_i16(void);
i32 nondet_i32(void);
i64 nondet_i64(void);

/* What the compiler leaves open: any value, but none that takes from the random ones. */
#ifdef __CPROVER__
#define unknown(bits) nondet_u##bits()
#else
#define unknown(bits) ((u##bits)0xa5a5a5a5a5a5a5a5u)
#endif

#ifdef __CPROVER__
#define prove(claim) __CPROVER_assert(claim, "what is to be proved")
#define never(what)                                                                                \
    do {                                                                                           \
        __CPROVER_assert(0, what);                                                                 \
        __CPROVER_assume(0);                                                                       \
    } while (0)
#define assume(what) __CPROVER_assume(what)
#define observe(value) ((void)(value))
static i32 between(i32 least, i32 most)
{
    const i32 x = nondet_i32();
    assume(least <= x && x <= most);
    return x;
}
/* The one claim that must fail, else a proof is one about nothing. */
#define reached() __CPROVER_assert(0, "the end is reached")
#else
#define reached() ((void)0)
void prove(u8 claim);
void never(const char* what);
void assume(u8 what);
void observe(u32 value);
i32 between(i32 least, i32 most);
#endif

/* The product of two words. Two circuits of it are hard to tell alike, so a proof that two ways of
 * computing are equal may take it for any function that does not mind the order of its factors,
 * knows the factor 1 and stays in the range of a product (proved in product.cpp). */
#if defined(__CPROVER__) && defined(ZSP_ANY_PRODUCT)
i32 __CPROVER_uninterpreted_product(i16 a, i16 b);
static i32 product(i16 a, i16 b)
{
    if (a == 1) return b;
    if (b == 1) return a;
    const i32 p =
        a < b ? __CPROVER_uninterpreted_product(a, b) : __CPROVER_uninterpreted_product(b, a);
    __CPROVER_assume(p >= -1073709056 && p <= 1073741824);
    return p;
}
#else
static inline i32 product(i16 a, i16 b)
{
    return (i32)a * (i32)b;
}
#endif

#include "proofs/operations.h"

/* The processor */

static inline u16 sat16_of(u32 x)
{
    return (u16)((i32)x > 32767 ? 32767 : (i32)x < -32768 ? -32768 : (i32)x);
}

/* vpmaddwd */
static inline v8ofu32 x86_avx2_pmadd_wd(v16ofu16 a, v16ofu16 b)
{
    v8ofu32 r;
    for (int i = 0; i < 8; ++i)
        r.v[i] = (u32)product((i16)a.v[2 * i], (i16)b.v[2 * i]) +
                 (u32)product((i16)a.v[2 * i + 1], (i16)b.v[2 * i + 1]);
    return r;
}

/* vpackssdw */
static inline v16ofu16 x86_avx2_packssdw(v8ofu32 a, v8ofu32 b)
{
    v16ofu16 r;
    for (int i = 0; i < 16; ++i) {
        const int from = i % 4 + i / 8 * 4;
        r.v[i] = sat16_of(i % 8 < 4 ? a.v[from] : b.v[from]);
    }
    return r;
}

static inline v8ofu16 x86_sse2_packssdw_128(v4ofu32 a, v4ofu32 b)
{
    v8ofu16 r;
    for (int i = 0; i < 8; ++i)
        r.v[i] = sat16_of(i < 4 ? a.v[i] : b.v[i - 4]);
    return r;
}

/* vpsrad by a count in 64 bits; more than 31 places leave the sign */
static inline v8ofu32 x86_avx2_psra_d(v8ofu32 a, v4ofu32 count)
{
    v8ofu32 r;
    const u64 n = (u64)count.v[1] << 32 | count.v[0];
    for (int i = 0; i < 8; ++i)
        r.v[i] = (u32)((i32)a.v[i] >> (n > 31 ? 31 : n));
    return r;
}

/* vpmulhw */
static inline v16ofu16 x86_avx2_pmulh_w(v16ofu16 a, v16ofu16 b)
{
    v16ofu16 r;
    for (int i = 0; i < 16; ++i)
        r.v[i] = (u16)((u32)product((i16)a.v[i], (i16)b.v[i]) >> 16);
    return r;
}

/* vpmulhrsw: -32768 squared gives -32768 */
static inline v16ofu16 x86_avx2_pmul_hr_sw(v16ofu16 a, v16ofu16 b)
{
    v16ofu16 r;
    for (int i = 0; i < 16; ++i)
        r.v[i] = (u16)(((product((i16)a.v[i], (i16)b.v[i]) >> 14) + 1) >> 1);
    return r;
}

/* vpshufb, in halves of 16 bytes; an index with its top bit set gives 0 */
static inline v32ofu8 x86_avx2_pshuf_b(v32ofu8 a, v32ofu8 order)
{
    v32ofu8 r;
    for (int i = 0; i < 32; ++i)
        r.v[i] = order.v[i] & 128 ? 0 : a.v[i / 16 * 16 + (order.v[i] & 15)];
    return r;
}

/* vpacksswb */
static inline v32ofu8 x86_avx2_packsswb(v16ofu16 a, v16ofu16 b)
{
    v32ofu8 r;
    for (int i = 0; i < 32; ++i) {
        const int from = i % 8 + i / 16 * 8;
        const i16 x = (i16)(i % 16 < 8 ? a.v[from] : b.v[from]);
        r.v[i] = (u8)(x > 127 ? 127 : x < -128 ? -128 : x);
    }
    return r;
}

/* vpackuswb */
static inline v32ofu8 x86_avx2_packuswb(v16ofu16 a, v16ofu16 b)
{
    v32ofu8 r;
    for (int i = 0; i < 32; ++i) {
        const int from = i % 8 + i / 16 * 8;
        const i16 x = (i16)(i % 16 < 8 ? a.v[from] : b.v[from]);
        r.v[i] = (u8)(x > 255 ? 255 : x < 0 ? 0 : x);
    }
    return r;
}

/* vpmovmskb */
static inline u32 x86_avx2_pmovmskb(v32ofu8 a)
{
    u32 r = 0;
    for (int i = 0; i < 32; ++i)
        r |= (u32)(a.v[i] >> 7) << i;
    return r;
}

#endif
