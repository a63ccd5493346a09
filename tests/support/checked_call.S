/* A call that notes in what state the callee leaves the processor.
 *
 * zspCheckedCall stands between a caller and the function in zspCall.target, with the arguments of
 * that function, in registers and on the stack. It takes the return address off the stack and calls,
 * so that the callee finds its stack arguments where it looks for them. Before, it cleans the upper
 * halves of the vector registers and gives the registers that a callee preserves known values;
 * afterwards it stores all that checked_call.cpp looks at. One call at a time: the record is global.
 */

#ifdef __ELF__
#define FUNCTION(name) .globl name; .hidden name; .type name, @function; .p2align 4; name
#else
#define FUNCTION(name) .globl name; .p2align 4; name
#endif

/* The fields of CallRecord. */
#define TARGET 0
#define RETURN 8
#define GIVEN 16
#define SAVED 80
#define LEFT 144
#define RSP_BEFORE 208
#define RSP_AFTER 216
#define FLAGS 224
#define RAX 232
#define RDX 240
#define MXCSR_BEFORE 248
#define MXCSR_AFTER 252
#define X87_BEFORE 256
#define ASKS_IN_USE 260
#define IN_USE 264
#define X87_AFTER 272
#define VECTORS 304
#define SAVED_VECTORS 816

#define FIELD(offset) zspCall+(offset)(%rip)

#define MOVE_OUT(offset)                                                                           \
        movq %rbx, FIELD(offset); movq %rbp, FIELD(offset + 8); movq %r12, FIELD(offset + 16);     \
        movq %r13, FIELD(offset + 24); movq %r14, FIELD(offset + 32);                              \
        movq %r15, FIELD(offset + 40); movq %rdi, FIELD(offset + 48); movq %rsi, FIELD(offset + 56)

#define MOVE_IN(offset)                                                                            \
        movq FIELD(offset), %rbx; movq FIELD(offset + 8), %rbp; movq FIELD(offset + 16), %r12;     \
        movq FIELD(offset + 24), %r13; movq FIELD(offset + 32), %r14; movq FIELD(offset + 40), %r15

        .text
FUNCTION(zspCheckedCall):
        popq FIELD(RETURN)
        MOVE_OUT(SAVED)
        MOVE_IN(GIVEN)
#ifdef _WIN32
        movq FIELD(GIVEN + 48), %rdi
        movq FIELD(GIVEN + 56), %rsi
        .irp n, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        vmovups %xmm\n, zspCall+SAVED_VECTORS+16*\n(%rip)
        vmovups FIELD(GIVEN), %xmm\n
        .endr
#endif
        stmxcsr FIELD(MXCSR_BEFORE)
        fnstcw FIELD(X87_BEFORE)
        movq %rsp, FIELD(RSP_BEFORE)
        vzeroupper

        call *FIELD(TARGET)

        movq %rax, FIELD(RAX)
        movq %rdx, FIELD(RDX)
        movq %rsp, FIELD(RSP_AFTER)
        MOVE_OUT(LEFT)
        cmpl $0, FIELD(ASKS_IN_USE)
        je 1f
        movl $1, %ecx
        xgetbv
        movl %eax, FIELD(IN_USE)
1:
        .irp n, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        vmovups %ymm\n, zspCall+VECTORS+32*\n(%rip)
        .endr
        vzeroupper
        stmxcsr FIELD(MXCSR_AFTER)
        fnstenv FIELD(X87_AFTER)

        movq FIELD(RSP_BEFORE), %rsp /* and everything else as the caller had it */
        pushfq
        popq FIELD(FLAGS)
        cld
        ldmxcsr FIELD(MXCSR_BEFORE)
        fninit
        fldcw FIELD(X87_BEFORE)
        MOVE_IN(SAVED)
#ifdef _WIN32
        movq FIELD(SAVED + 48), %rdi
        movq FIELD(SAVED + 56), %rsi
        .irp n, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15
        vmovups zspCall+SAVED_VECTORS+16*\n(%rip), %xmm\n
        .endr
#endif
        movq FIELD(RDX), %rdx
        movq FIELD(RAX), %rax
        pushq FIELD(RETURN)
        ret

/* Callees that each leave one thing behind. */
FUNCTION(zspLeaveNothing):
        ret
FUNCTION(zspLeaveUpperHalf):
        vpcmpeqd %ymm5, %ymm5, %ymm5
        ret
FUNCTION(zspLeaveUpperZero): /* dirty to the processor, though all bits are zero */
        vpcmpeqd %ymm5, %ymm5, %ymm5
        vpsrld $32, %ymm5, %ymm5
        ret
FUNCTION(zspLeaveRbx):
        incq %rbx
        ret
FUNCTION(zspLeaveR15):
        xorl %r15d, %r15d
        ret
FUNCTION(zspLeaveRsp):
        popq %rcx
        pushq $0
        jmp *%rcx
FUNCTION(zspLeaveRounding):
        stmxcsr -8(%rsp)
        orl $0x6000, -8(%rsp)
        ldmxcsr -8(%rsp)
        ret
FUNCTION(zspLeaveX87Word):
        fnstcw -8(%rsp)
        xorl $0x300, -8(%rsp)
        fldcw -8(%rsp)
        ret
FUNCTION(zspLeaveX87Stack):
        fldz
        ret
FUNCTION(zspLeaveMmx): /* without emms */
        pxor %mm0, %mm0
        ret
FUNCTION(zspLeaveDirection):
        std
        ret
FUNCTION(zspLeaveXmm6):
        vpcmpeqd %xmm6, %xmm6, %xmm6
        ret

/* Bit 2 of XINUSE: upper halves that are not in their initial state. First after vzeroupper, then
 * after a write. */
FUNCTION(zspUpperInUse):
        pushq %rbx
        vzeroupper
        movl $1, %ecx
        xgetbv
        movl %eax, %ebx
        vpcmpeqd %ymm5, %ymm5, %ymm5
        movl $1, %ecx
        xgetbv
        vzeroupper
        shrl $2, %ebx
        andl $1, %ebx
        shrl $1, %eax
        andl $2, %eax
        orl %ebx, %eax
        popq %rbx
        ret

#ifdef __ELF__
        .globl zspCall
        .hidden zspCall
        .type zspCall, @object
        .size zspCall, 1072
#else
        .globl zspCall
#endif
        .bss
        .p2align 5
zspCall:
        .skip 1072

#ifdef __ELF__
        .section .note.GNU-stack, "", @progbits
#endif
