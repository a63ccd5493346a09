// Blocks between inaccessible pages, flush against either or floating with canaries around.

#include "tests/fuzz/blocks.hpp"

#include <algorithm>
#include <cstdlib>

#ifdef _WIN32
#include <windows.h>
#else
#include <sys/mman.h>
#endif

#ifdef __SANITIZE_ADDRESS__
#define ZSP_ASAN
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define ZSP_ASAN
#endif
#endif
#ifdef ZSP_ASAN
#include <sanitizer/asan_interface.h>
#else
#define ASAN_POISON_MEMORY_REGION(begin, size) ((void)(begin), (void)(size))
#define ASAN_UNPOISON_MEMORY_REGION(begin, size) ((void)(begin), (void)(size))
#endif

namespace zsp::fuzz {

namespace {

constexpr std::size_t kPage = 4096;
constexpr std::size_t kSlots = 128;
constexpr std::size_t kSlot = Blocks::kLargest + kPage;
constexpr std::size_t kSurroundings = 64;
constexpr std::byte kPattern{0xA5};

constexpr std::size_t kAll = kPage + kSlots * (kSlot + kPage);

#ifdef _WIN32
void* reserve()
{
    return VirtualAlloc(nullptr, kAll, MEM_RESERVE, PAGE_NOACCESS);
}
bool open(std::byte* slot)
{
    return VirtualAlloc(slot, kSlot, MEM_COMMIT, PAGE_READWRITE) != nullptr;
}
void giveBack(void* memory)
{
    VirtualFree(memory, 0, MEM_RELEASE);
}
#else
void* reserve()
{
    void* memory =
        mmap(nullptr, kAll, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0);
    return memory == MAP_FAILED ? nullptr : memory;
}
bool open(std::byte* slot)
{
    return mprotect(slot, kSlot, PROT_READ | PROT_WRITE) == 0;
}
void giveBack(void* memory)
{
    munmap(memory, kAll);
}
#endif

std::size_t bytesBetween(const std::byte* from, const std::byte* to)
{
    return static_cast<std::size_t>(to - from);
}

} // namespace

Blocks::Blocks() : memory_(static_cast<std::byte*>(reserve()))
{
    if (!memory_) std::abort();
    for (std::size_t i = 0; i < kSlots; ++i)
        if (!open(memory_ + kPage + i * (kSlot + kPage))) std::abort();
}

Blocks::~Blocks()
{
    release(0);
    giveBack(memory_);
}

std::byte* Blocks::place(std::size_t bytes, std::size_t alignment, Choices& choices)
{
    if (bytes > kLargest || blocks_.size() == kSlots) std::abort();
    std::byte* const first = memory_ + kPage + blocks_.size() * (kSlot + kPage);
    std::byte* const last = first + kSlot;
    std::byte* begin = last - bytes; // ends at a page
    switch (choices.below(4)) {
    case 0:
        begin = first;
        break;
    case 1: {
        const auto misalignment =
            static_cast<std::size_t>(choices.below(64)) / alignment * alignment;
        begin = first + kSurroundings + misalignment;
        break;
    }
    default:
        break;
    }
    std::byte* const end = begin + bytes;
    const Block block{begin, end, begin - std::min(kSurroundings, bytesBetween(first, begin)),
                      end + std::min(kSurroundings, bytesBetween(end, last))};
    std::fill(block.before, block.begin, kPattern);
    std::fill(block.end, block.after, kPattern);
    ASAN_POISON_MEMORY_REGION(block.before, bytesBetween(block.before, block.begin));
    ASAN_POISON_MEMORY_REGION(block.end, bytesBetween(block.end, block.after));
    blocks_.push_back(block);
    return begin;
}

__attribute__((no_sanitize("address"))) bool Blocks::surroundingsKept() const
{
    for (const Block& block : blocks_) {
        for (const std::byte* p = block.before; p != block.begin; ++p)
            if (*p != kPattern) return false;
        for (const std::byte* p = block.end; p != block.after; ++p)
            if (*p != kPattern) return false;
    }
    return true;
}

void Blocks::release(std::size_t count)
{
    for (; blocks_.size() > count; blocks_.pop_back()) {
        const Block& block = blocks_.back();
        ASAN_UNPOISON_MEMORY_REGION(block.before, bytesBetween(block.before, block.after));
    }
}

} // namespace zsp::fuzz
