/* The speech of data/, so that the program needs no files at run time. */
#ifdef __ELF__
    .section .rodata
#else
    .section .rdata, "dr"
#endif
    .macro bundle name, file
    .balign 16
    .globl \name
    .globl \name\()_end
\name:
    .incbin "\file"
\name\()_end:
    .endm

    bundle zsp_speech_8k, speech_8k.wav
    bundle zsp_speech_16k, speech_16k.wav

#ifdef __ELF__
    .section .note.GNU-stack,"",@progbits
#endif
