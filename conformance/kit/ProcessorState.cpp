#include "conformance/kit/ProcessorState.h"

#include <cfenv>
#include <cstddef>
#include <cstdint>

// MemorySanitizer has to see a call to know which of its arguments are initialized.
#if defined(__has_feature)
#if __has_feature(memory_sanitizer)
#define KOR_CONFORMANCE_HIDES_NO_CALL 1
#endif
#endif

#if defined(__ELF__) && defined(__LP64__) && !defined(KOR_CONFORMANCE_HIDES_NO_CALL)
#if defined(__x86_64__)
#define KOR_CONFORMANCE_X86_64 1
#elif defined(__aarch64__) && !defined(__AARCH64EB__)
#define KOR_CONFORMANCE_AARCH64 1
#endif
#endif

namespace kit {

const char* NameOf(FloatMode mode) {
    static const char* const kNames[] = {"to nearest", "down", "up", "toward zero"};
    return kNames[static_cast<int>(mode)];
}

std::string ProcessorChange::Text() const {
    std::string text;
    for (int i = 0; i < count; ++i) {
        text += (i == 0 ? "" : ", ") + std::string(parts[i]);
    }
    return text;
}

#if defined(KOR_CONFORMANCE_X86_64) || defined(KOR_CONFORMANCE_AARCH64)

namespace {

constexpr std::size_t kCallWords = MachineCall::kMost;
static_assert(kCallWords == 24, "the assembly below passes as many");

#if defined(KOR_CONFORMANCE_X86_64)

// The assembly below knows the offsets.
struct Watch {
    std::uint64_t words[kCallWords];  // 0
    void (*function)();               // 192
    std::uint64_t registers[6];       // 200: what they hold before the call, and then after it
    std::uint64_t flags;              // 248: after the call
    std::uint32_t mxcsr;              // 256: for the call
    std::uint32_t mxcsrAfter;         // 260
    std::uint16_t x87;                // 264: the control word for the call
    std::uint16_t x87After;           // 266
    std::uint32_t environment[7];     // 268: of the x87 unit after the call; the tags are in the third word
    std::uint32_t mxcsrOfCaller;      // 296
    std::uint16_t x87OfCaller;        // 300
};
static_assert(offsetof(Watch, function) == 192 && offsetof(Watch, registers) == 200 && offsetof(Watch, flags) == 248 &&
              offsetof(Watch, mxcsr) == 256 && offsetof(Watch, x87After) == 266 &&
              offsetof(Watch, environment) == 268 && offsetof(Watch, mxcsrOfCaller) == 296 &&
              offsetof(Watch, x87OfCaller) == 300);

constexpr const char* kRegisters[] = {"register rbx", "register rbp", "register r12",
                                      "register r13", "register r14", "register r15"};

#else

struct Watch {
    std::uint64_t words[kCallWords];  // 0
    void (*function)();               // 192
    std::uint64_t registers[19];      // 200: x19 to x29, d8 to d15; before the call, and then after it
    std::uint64_t fpcr;               // 352: for the call
    std::uint64_t fpcrAfter;          // 360
    std::uint64_t fpcrOfCaller;       // 368
};
static_assert(offsetof(Watch, function) == 192 && offsetof(Watch, registers) == 200 && offsetof(Watch, fpcr) == 352 &&
              offsetof(Watch, fpcrOfCaller) == 368);

constexpr const char* kRegisters[] = {"register x19", "register x20", "register x21", "register x22", "register x23",
                                      "register x24", "register x25", "register x26", "register x27", "register x28",
                                      "register x29", "register d8",  "register d9",  "register d10", "register d11",
                                      "register d12", "register d13", "register d14", "register d15"};

#endif

constexpr std::size_t kRegisterCount = sizeof kRegisters / sizeof kRegisters[0];

// What the n-th preserved register holds during the call: no address, no small number.
std::uint64_t Marker(std::size_t n) {
    return UINT64_C(0x9e3779b97f4a7c15) * (n + 1);
}

extern "C" void KorConformanceCallWatched(Watch* watch) __attribute__((visibility("hidden")));

}  // namespace

#if defined(KOR_CONFORMANCE_X86_64)

// Six arguments travel in registers, all others on the stack, where 18 words are laid whether or not the function takes
// them. What the function leaves in the registers is saved before anything else, and then everything is put right: the
// direction and alignment flags, the x87 unit, the control words.
asm(R"(
    .text
    .p2align 4
    .hidden KorConformanceCallWatched
    .globl KorConformanceCallWatched
    .type KorConformanceCallWatched, @function
KorConformanceCallWatched:
    .cfi_startproc
    pushq %rbp
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %rbp, 0
    pushq %rbx
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %rbx, 0
    pushq %r12
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r12, 0
    pushq %r13
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r13, 0
    pushq %r14
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r14, 0
    pushq %r15
    .cfi_adjust_cfa_offset 8
    .cfi_rel_offset %r15, 0
    pushq %rdi
    .cfi_adjust_cfa_offset 8
    subq $144, %rsp
    .cfi_adjust_cfa_offset 144
    movq %rdi, %r11
    xorl %ecx, %ecx
1:  movq 48(%r11,%rcx,8), %rax
    movq %rax, (%rsp,%rcx,8)
    incq %rcx
    cmpq $18, %rcx
    jne 1b
    stmxcsr 296(%r11)
    fnstcw 300(%r11)
    ldmxcsr 256(%r11)
    fldcw 264(%r11)
    movq 200(%r11), %rbx
    movq 208(%r11), %rbp
    movq 216(%r11), %r12
    movq 224(%r11), %r13
    movq 232(%r11), %r14
    movq 240(%r11), %r15
    movq (%r11), %rdi
    movq 8(%r11), %rsi
    movq 16(%r11), %rdx
    movq 24(%r11), %rcx
    movq 32(%r11), %r8
    movq 40(%r11), %r9
    xorl %eax, %eax
    call *192(%r11)
    movq 144(%rsp), %rax
    pushfq
    popq 248(%rax)
    pushfq
    andq $~0x40400, (%rsp)
    popfq
    movq %rbx, 200(%rax)
    movq %rbp, 208(%rax)
    movq %r12, 216(%rax)
    movq %r13, 224(%rax)
    movq %r14, 232(%rax)
    movq %r15, 240(%rax)
    stmxcsr 260(%rax)
    ldmxcsr 296(%rax)
    fnstcw 266(%rax)
    fnstenv 268(%rax)
    cmpw $-1, 276(%rax)
    je 2f
    fninit
2:  fldcw 300(%rax)
    addq $152, %rsp
    .cfi_adjust_cfa_offset -152
    popq %r15
    .cfi_adjust_cfa_offset -8
    popq %r14
    .cfi_adjust_cfa_offset -8
    popq %r13
    .cfi_adjust_cfa_offset -8
    popq %r12
    .cfi_adjust_cfa_offset -8
    popq %rbx
    .cfi_adjust_cfa_offset -8
    popq %rbp
    .cfi_adjust_cfa_offset -8
    ret
    .cfi_endproc
    .size KorConformanceCallWatched, .-KorConformanceCallWatched
)");

namespace {

// The rounding mode in its place, with all exceptions masked; bits 15 and 6 flush results and operands.
void SetMode(FloatMode mode, Watch& watch) {
    static constexpr std::uint32_t kRounding[] = {0, 1, 2, 3};
    const std::uint32_t rounding = kRounding[static_cast<int>(mode)];
    watch.mxcsr = 0x1f80 | (rounding << 13) | (mode == FloatMode::Usual ? 0u : 0x8040u);
    watch.x87 = static_cast<std::uint16_t>(0x037f | (rounding << 10));
}

void CompareControls(const Watch& watch, ProcessorChange& change) {
    constexpr std::uint64_t kDirection = 0x400;
    constexpr std::uint64_t kAlignment = 0x40000;
    constexpr std::uint32_t kRoundingBits = 0x6000;
    constexpr std::uint32_t kFlushBits = 0x8040;
    constexpr std::uint32_t kMaskBits = 0x1f80;
    const std::uint32_t mxcsr = watch.mxcsr ^ watch.mxcsrAfter;
    if ((mxcsr & kRoundingBits) != 0) {
        change.Add("rounding mode (MXCSR)");
    }
    if ((mxcsr & kFlushBits) != 0) {
        change.Add("flush to zero (MXCSR)");
    }
    if ((mxcsr & kMaskBits) != 0) {
        change.Add("exception masks (MXCSR)");
    }
    if (watch.x87 != watch.x87After) {
        change.Add("x87 control word");
    }
    if ((watch.environment[2] & 0xffff) != 0xffff) {
        change.Add("x87 or MMX registers in use (emms is missing)");
    }
    if ((watch.flags & kDirection) != 0) {
        change.Add("direction flag set");
    }
    if ((watch.flags & kAlignment) != 0) {
        change.Add("alignment check flag set");
    }
}

}  // namespace

#else

asm(R"(
    .text
    .p2align 4
    .hidden KorConformanceCallWatched
    .globl KorConformanceCallWatched
    .type KorConformanceCallWatched, %function
KorConformanceCallWatched:
    .cfi_startproc
    stp x29, x30, [sp, #-176]!
    .cfi_def_cfa_offset 176
    .cfi_offset 29, -176
    .cfi_offset 30, -168
    stp x19, x20, [sp, #16]
    stp x21, x22, [sp, #32]
    stp x23, x24, [sp, #48]
    stp x25, x26, [sp, #64]
    stp x27, x28, [sp, #80]
    stp d8, d9, [sp, #96]
    stp d10, d11, [sp, #112]
    stp d12, d13, [sp, #128]
    stp d14, d15, [sp, #144]
    str x0, [sp, #160]
    sub sp, sp, #128
    .cfi_def_cfa_offset 304
    mov x16, x0
    add x10, x0, #64
    mov x11, #0
1:  ldr x12, [x10, x11, lsl #3]
    str x12, [sp, x11, lsl #3]
    add x11, x11, #1
    cmp x11, #16
    b.ne 1b
    mrs x9, fpcr
    str x9, [x16, #368]
    ldr x9, [x16, #352]
    msr fpcr, x9
    ldp x19, x20, [x16, #200]
    ldp x21, x22, [x16, #216]
    ldp x23, x24, [x16, #232]
    ldp x25, x26, [x16, #248]
    ldp x27, x28, [x16, #264]
    ldr x29, [x16, #280]
    ldp d8, d9, [x16, #288]
    ldp d10, d11, [x16, #304]
    ldp d12, d13, [x16, #320]
    ldp d14, d15, [x16, #336]
    ldr x17, [x16, #192]
    ldp x0, x1, [x16]
    ldp x2, x3, [x16, #16]
    ldp x4, x5, [x16, #32]
    ldp x6, x7, [x16, #48]
    blr x17
    ldr x9, [sp, #288]
    stp x19, x20, [x9, #200]
    stp x21, x22, [x9, #216]
    stp x23, x24, [x9, #232]
    stp x25, x26, [x9, #248]
    stp x27, x28, [x9, #264]
    str x29, [x9, #280]
    stp d8, d9, [x9, #288]
    stp d10, d11, [x9, #304]
    stp d12, d13, [x9, #320]
    stp d14, d15, [x9, #336]
    mrs x10, fpcr
    str x10, [x9, #360]
    ldr x10, [x9, #368]
    msr fpcr, x10
    add sp, sp, #128
    .cfi_def_cfa_offset 176
    ldp x19, x20, [sp, #16]
    ldp x21, x22, [sp, #32]
    ldp x23, x24, [sp, #48]
    ldp x25, x26, [sp, #64]
    ldp x27, x28, [sp, #80]
    ldp d8, d9, [sp, #96]
    ldp d10, d11, [sp, #112]
    ldp d12, d13, [sp, #128]
    ldp d14, d15, [sp, #144]
    ldp x29, x30, [sp], #176
    .cfi_def_cfa_offset 0
    ret
    .cfi_endproc
    .size KorConformanceCallWatched, .-KorConformanceCallWatched
)");

namespace {

constexpr std::uint64_t kRoundingBits = 3 << 22;
constexpr std::uint64_t kFlushBit = 1 << 24;

void SetMode(FloatMode mode, Watch& watch) {
    static constexpr std::uint64_t kRounding[] = {0, 2, 1, 3};
    watch.fpcr = (kRounding[static_cast<int>(mode)] << 22) | (mode == FloatMode::Usual ? 0u : kFlushBit);
}

void CompareControls(const Watch& watch, ProcessorChange& change) {
    const std::uint64_t fpcr = watch.fpcr ^ watch.fpcrAfter;
    if ((fpcr & kRoundingBits) != 0) {
        change.Add("rounding mode (FPCR)");
    }
    if ((fpcr & kFlushBit) != 0) {
        change.Add("flush to zero (FPCR)");
    }
    if ((fpcr & ~(kRoundingBits | kFlushBit)) != 0) {
        change.Add("floating-point controls (FPCR)");
    }
}

}  // namespace

#endif

void CallWatched(const AnyFunction& function, const PlaneView* planes, const Case& options, FloatMode mode,
                 ProcessorChange& change) {
    Watch watch;
    const MachineCall call = ToMachineCall(function, planes, options);
    watch.function = call.function;
    for (std::size_t i = 0; i < kCallWords; ++i) {
        watch.words[i] = call.words[i];
    }
    for (std::size_t i = 0; i < kRegisterCount; ++i) {
        watch.registers[i] = Marker(i);
    }
    SetMode(mode, watch);
    KorConformanceCallWatched(&watch);
    for (std::size_t i = 0; i < kRegisterCount; ++i) {
        if (watch.registers[i] != Marker(i)) {
            change.Add(kRegisters[i]);
        }
    }
    CompareControls(watch, change);
}

bool WatchesRegisters() {
    return true;
}

#else

namespace {

// Modes that a system does not have stand for the usual one.
int Rounding(FloatMode mode) {
    switch (mode) {
        case FloatMode::Usual:
            break;
#if defined(FE_DOWNWARD)
        case FloatMode::Down:
            return FE_DOWNWARD;
#endif
#if defined(FE_UPWARD)
        case FloatMode::Up:
            return FE_UPWARD;
#endif
#if defined(FE_TOWARDZERO)
        case FloatMode::TowardZero:
            return FE_TOWARDZERO;
#endif
        default:
            break;
    }
    return FE_TONEAREST;
}

}  // namespace

void CallWatched(const AnyFunction& function, const PlaneView* planes, const Case& options, FloatMode mode,
                 ProcessorChange& change) {
    // WebAssembly takes every mode and has one.
    const bool set = std::fesetround(Rounding(mode)) == 0 && std::fegetround() == Rounding(mode);
    Call(function, planes, options);
    if (set && std::fegetround() != Rounding(mode)) {
        change.Add("rounding mode");
    }
    std::fesetround(FE_TONEAREST);
}

bool WatchesRegisters() {
    return false;
}

#endif

void ResetProcessor() {
    std::fesetenv(FE_DFL_ENV);
#if defined(KOR_CONFORMANCE_X86_64)
    asm volatile("cld");
#endif
}

}  // namespace kit
