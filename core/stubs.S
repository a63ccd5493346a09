/* The exported symbols: ten bytes each, a jump through the export's slot of the dispatch table.
 * r11 is volatile and carries no argument in the System V and the Win64 calling convention, so the
 * implementation finds its arguments untouched. */

#ifdef __ELF__
#define ZSP_STUB(name)                                                                             \
        .p2align 4, 0xcc; .globl name; .type name, @function; name: .cfi_startproc;                \
        leaq zspSlot_##name(%rip), %r11; jmp *(%r11); .cfi_endproc; .size name, . - name;
#else
#define ZSP_STUB(name)                                                                             \
        .p2align 4, 0xcc; .globl name; name: leaq zspSlot_##name(%rip), %r11; jmp *(%r11);
#endif

#define ZSP_EXPORT(name) ZSP_STUB(name)
#define ZSP_EXPORT_AS(name, shared) ZSP_STUB(name)

        .text
#ifdef __ELF__
        /* Whoever links the archive and uses any export gets the load routine as well: a relocation
         * that does nothing but name it. */
        .hidden zspLoadAnchor
        .reloc ., R_X86_64_NONE, zspLoadAnchor
#endif
#include "core/exports.inc"

#ifdef __ELF__
        .section .note.GNU-stack, "", @progbits
#endif
