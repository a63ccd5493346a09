/* The operations of the intermediate code that are none of C, on words of each width. Included by
 * models.h, which has the types. */
#ifndef ZSP_PROOFS_OPERATIONS_H
#define ZSP_PROOFS_OPERATIONS_H

#define ZSP_WORD(n)                                                                                \
    static inline u##n smax_##n(u##n a, u##n b)                                                    \
    {                                                                                              \
        return (i##n)a > (i##n)b ? a : b;                                                          \
    }                                                                                              \
    static inline u##n smin_##n(u##n a, u##n b)                                                    \
    {                                                                                              \
        return (i##n)a < (i##n)b ? a : b;                                                          \
    }                                                                                              \
    static inline u##n umax_##n(u##n a, u##n b)                                                    \
    {                                                                                              \
        return a > b ? a : b;                                                                      \
    }                                                                                              \
    static inline u##n umin_##n(u##n a, u##n b)                                                    \
    {                                                                                              \
        return a < b ? a : b;                                                                      \
    }                                                                                              \
    static inline u##n abs_##n(u##n a)                                                             \
    {                                                                                              \
        return (u##n)((i##n)a < 0 ? 0u - a : a);                                                   \
    }                                                                                              \
    static inline u##n fshl_##n(u##n a, u##n b, u##n k)                                            \
    {                                                                                              \
        return (u##n)(k % n ? (u64)a << (k % n) | (u64)b >> (n - k % n) : a);                      \
    }                                                                                              \
    static inline u##n ctlz_##n(u##n a)                                                            \
    {                                                                                              \
        u##n count = 0;                                                                            \
        for (int bit = n - 1; bit >= 0 && !(a >> bit & 1); --bit)                                  \
            ++count;                                                                               \
        return count;                                                                              \
    }                                                                                              \
    static inline u##n ctpop_##n(u##n a)                                                           \
    {                                                                                              \
        u##n count = 0;                                                                            \
        for (int bit = 0; bit < n; ++bit)                                                          \
            count = (u##n)(count + (a >> bit & 1));                                                \
        return count;                                                                              \
    }
ZSP_WORD(8)
ZSP_WORD(16)
ZSP_WORD(32)
ZSP_WORD(64)

/* Sums, differences and products that say whether they overflow, and those that saturate. */
#define ZSP_SIGNED(n)                                                                              \
    static inline i##n least_##n(void)                                                             \
    {                                                                                              \
        return (i##n)((u64)1 << (n - 1));                                                          \
    }                                                                                              \
    static inline u8 over_sadd_##n(u##n a, u##n b)                                                 \
    {                                                                                              \
        const u##n sum = (u##n)(a + b);                                                            \
        return ((a ^ sum) & (b ^ sum)) >> (n - 1) & 1;                                             \
    }                                                                                              \
    static inline u8 over_ssub_##n(u##n a, u##n b)                                                 \
    {                                                                                              \
        const u##n difference = (u##n)(a - b);                                                     \
        return ((a ^ b) & (a ^ difference)) >> (n - 1) & 1;                                        \
    }                                                                                              \
    static inline u##n sum_sadd_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        return (u##n)(a + b);                                                                      \
    }                                                                                              \
    static inline u##n sum_ssub_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        return (u##n)(a - b);                                                                      \
    }                                                                                              \
    static inline u##n sum_sshl_##n(u##n a, u##n places)                                           \
    {                                                                                              \
        return places < n ? (u##n)((u64)a << places) : 0;                                          \
    }                                                                                              \
    /* times 2^places; the top bit counts as overflow also where it would be negative */           \
    static inline u8 over_sshl_##n(u##n a, u##n places)                                            \
    {                                                                                              \
        return places >= n - 1 || (i##n)(u##n)((u64)a << places) >> places != (i##n)a;             \
    }                                                                                              \
    static inline u##n sum_uadd_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        return (u##n)(a + b);                                                                      \
    }                                                                                              \
    static inline u8 over_uadd_##n(u##n a, u##n b)                                                 \
    {                                                                                              \
        return (u##n)(a + b) < a;                                                                  \
    }                                                                                              \
    static inline u##n sadd_sat_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        if (!over_sadd_##n(a, b)) return (u##n)(a + b);                                            \
        return (u##n)((i##n)a < 0 ? (u##n)least_##n() : (u##n) ~(u##n)least_##n());                \
    }                                                                                              \
    static inline u##n ssub_sat_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        if (!over_ssub_##n(a, b)) return (u##n)(a - b);                                            \
        return (u##n)((i##n)a < 0 ? (u##n)least_##n() : (u##n) ~(u##n)least_##n());                \
    }                                                                                              \
    static inline u##n uadd_sat_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        return (u##n)(a + b) < a ? (u##n) ~(u##n)0 : (u##n)(a + b);                                \
    }                                                                                              \
    static inline u##n usub_sat_##n(u##n a, u##n b)                                                \
    {                                                                                              \
        return a < b ? 0 : (u##n)(a - b);                                                          \
    }
ZSP_SIGNED(8)
ZSP_SIGNED(16)
ZSP_SIGNED(32)
ZSP_SIGNED(64)

static inline u32 sum_smul_32(u32 a, u32 b)
{
    return (u32)((u64)a * b);
}
static inline u8 over_smul_32(u32 a, u32 b)
{
    const i64 p = (i64)(i32)a * (i32)b;
    return p != (i32)p;
}
static inline u64 sum_smul_64(u64 a, u64 b)
{
    return a * b;
}
/* For factors of at most 2^31, as they all are here; what is larger counts as overflow. */
static inline u8 over_smul_64(u64 a, u64 b)
{
    const i64 x = (i64)a, y = (i64)b;
    const i64 narrow = (i64)1 << 31;
    if (x < -narrow || x > narrow || y < -narrow || y > narrow) return 1;
    return 0;
}

#endif
