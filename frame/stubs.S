/* The stub and the lazy entry of every dispatched export.
 *
 * A stub loads the group's build index and jumps through the export's row, taking entry 1 as index 0.
 * It leaves arguments and return address where they are and saves nothing: it uses only registers
 * that a call may change and that carry no argument. Position-independent code adds what it needs to
 * address the row: 64 bits can't index a table relative to the instruction pointer and take the row's
 * address first, 32-bit ELF has to find itself. 32-bit Windows needs neither: two instructions.
 *
 * A lazy entry selects the group's build and goes through the stub again, which now reads the index
 * that was stored.
 */

#if defined(_WIN32) && defined(__i386__)
#define C(name) _##name
#define STDCALL(name, bytes) TEXT(_##name@bytes)
#define TEXT(name) #name
#else
#define C(name) name
#define STDCALL(name, bytes) name
#endif

        .text

#if defined(__ELF__)
        .macro  function name
        .type   \name, @function
        .endm
        .macro  end name
        .size   \name, . - \name
        .endm
        .macro  private name
        .hidden \name
        .endm
#else
        .macro  function name
        .def    \name
        .scl    2
        .type   32
        .endef
        .endm
        .macro  end name
        .endm
        .macro  private name
        .endm
#endif

#if defined(__x86_64__)

        .macro  jump_through row, group
        movslq  4 * (\group - 1) + C(orbFrameState)(%rip), %rax
        leaq    8 + \row(%rip), %r11
        jmp     *(%r11, %rax, 8)
        .endm

        .macro  select_build group
        movl    $\group, %eax
        call    selectBuild
        .endm

/* Runs orbInitGroup for the group in eax, and keeps every register that can hold an argument. Two
 * return addresses lie above, so the stack is at a multiple of 16.
 */
#if defined(_WIN32)
        /* rcx rdx r8 r9 and xmm0 to xmm3, above the 32 bytes that the callee may use. */
        .def selectBuild; .scl 3; .type 32; .endef
        .seh_proc selectBuild
selectBuild:
        subq    $128, %rsp
        .seh_stackalloc 128
        .seh_endprologue
        movq    %rcx, 32(%rsp)
        movq    %rdx, 40(%rsp)
        movq    %r8, 48(%rsp)
        movq    %r9, 56(%rsp)
        movups  %xmm0, 64(%rsp)
        movups  %xmm1, 80(%rsp)
        movups  %xmm2, 96(%rsp)
        movups  %xmm3, 112(%rsp)
        movl    %eax, %ecx
        call    C(orbInitGroup)
        movq    32(%rsp), %rcx
        movq    40(%rsp), %rdx
        movq    48(%rsp), %r8
        movq    56(%rsp), %r9
        movups  64(%rsp), %xmm0
        movups  80(%rsp), %xmm1
        movups  96(%rsp), %xmm2
        movups  112(%rsp), %xmm3
        addq    $128, %rsp
        ret
        .seh_endproc
#else
        /* rdi rsi rdx rcx r8 r9 and xmm0 to xmm7. */
        function selectBuild
selectBuild:
        .cfi_startproc
        subq    $176, %rsp
        .cfi_def_cfa_offset 184
        movq    %rdi, 0(%rsp)
        movq    %rsi, 8(%rsp)
        movq    %rdx, 16(%rsp)
        movq    %rcx, 24(%rsp)
        movq    %r8, 32(%rsp)
        movq    %r9, 40(%rsp)
        movups  %xmm0, 48(%rsp)
        movups  %xmm1, 64(%rsp)
        movups  %xmm2, 80(%rsp)
        movups  %xmm3, 96(%rsp)
        movups  %xmm4, 112(%rsp)
        movups  %xmm5, 128(%rsp)
        movups  %xmm6, 144(%rsp)
        movups  %xmm7, 160(%rsp)
        movl    %eax, %edi
        call    C(orbInitGroup)
        movq    0(%rsp), %rdi
        movq    8(%rsp), %rsi
        movq    16(%rsp), %rdx
        movq    24(%rsp), %rcx
        movq    32(%rsp), %r8
        movq    40(%rsp), %r9
        movups  48(%rsp), %xmm0
        movups  64(%rsp), %xmm1
        movups  80(%rsp), %xmm2
        movups  96(%rsp), %xmm3
        movups  112(%rsp), %xmm4
        movups  128(%rsp), %xmm5
        movups  144(%rsp), %xmm6
        movups  160(%rsp), %xmm7
        addq    $176, %rsp
        .cfi_def_cfa_offset 8
        ret
        .cfi_endproc
        end selectBuild
#endif

#elif defined(_WIN32)

        .macro  jump_through row, group
        movl    4 * (\group - 1) + C(orbFrameState), %eax
        jmp     *4 + \row(, %eax, 4)
        .endm

#else

        .macro  jump_through row, group
        call    ownAddress
1:      movl    4 * (\group - 1) + C(orbFrameState) - 1b(%eax), %ecx
        jmp     *4 + \row - 1b(%eax, %ecx, 4)
        .endm

        function ownAddress
ownAddress:
        .cfi_startproc
        movl    (%esp), %eax
        ret
        .cfi_endproc
        end ownAddress

#endif

#if defined(__i386__)

        /* Every argument is on the stack already. */
        .macro  select_build group
        subl    $8, %esp
        .cfi_adjust_cfa_offset 8
        pushl   $\group
        .cfi_adjust_cfa_offset 4
        call    C(orbInitGroup)
        addl    $12, %esp
        .cfi_adjust_cfa_offset -12
        .endm

#endif

        .macro  stub export, lazy, row, group
        .p2align 4
        .globl  \export
        function \export
\export:
        .cfi_startproc
0:      jump_through \row, \group
        .cfi_endproc
        end     \export

        .globl  \lazy
        private \lazy
        function \lazy
\lazy:
        .cfi_startproc
        select_build \group
        jmp     0b
        .cfi_endproc
        end     \lazy
        .endm

#define ORB_EXPORT(group, bytes, name)                                                   \
        stub STDCALL(legacy90##name, bytes), STDCALL(orbLazy_##name, bytes), C(orbRow_##name), \
             group;
#define ORB_VERSION_EXPORT ORB_EXPORT
#include "frame/exports.inc"

#if defined(__ELF__)
        .section .note.GNU-stack, "", @progbits
#endif
