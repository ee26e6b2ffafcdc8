#include "platform/freedesktop/MemoryTrim.h"

#include <elf.h>
#include <link.h>
#include <malloc.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

namespace lumo::freedesktop {

namespace {

std::span<const ElfW(Phdr)> segmentsOf(const dl_phdr_info &object) {
    return {object.dlpi_phdr, object.dlpi_phnum};
}

void *addressOf(std::uintptr_t address) {
    return reinterpret_cast<void *>(address); // NOLINT(performance-no-int-to-ptr): the linker's
}

// Code that the dynamic linker has changed exists in this process only.
bool hasChangedCode(const dl_phdr_info &object) {
    for (const auto &segment : segmentsOf(object)) {
        if (segment.p_type != PT_DYNAMIC) {
            continue;
        }
        const std::span entries(
            static_cast<const ElfW(Dyn) *>(addressOf(object.dlpi_addr + segment.p_vaddr)),
            segment.p_memsz / sizeof(ElfW(Dyn)));
        return std::ranges::any_of(entries, [](const ElfW(Dyn) & entry) {
            return entry.d_tag == DT_TEXTREL ||
                   (entry.d_tag == DT_FLAGS && (entry.d_un.d_val & DF_TEXTREL) != 0);
        });
    }
    return true; // nothing is known about it
}

int dropCode(dl_phdr_info *object, std::size_t /*size*/, void * /*data*/) {
    if (hasChangedCode(*object)) {
        return 0;
    }
    const auto page = static_cast<std::uintptr_t>(sysconf(_SC_PAGESIZE));
    for (const auto &segment : segmentsOf(*object)) {
        if (segment.p_type == PT_LOAD && (segment.p_flags & PF_X) != 0 &&
            (segment.p_flags & PF_W) == 0) {
            const auto begin = (object->dlpi_addr + segment.p_vaddr) / page * page;
            const auto end = object->dlpi_addr + segment.p_vaddr + segment.p_memsz;
            madvise(addressOf(begin), end - begin, MADV_DONTNEED);
        }
    }
    return 0;
}

} // namespace

void trimMemory() {
    malloc_trim(0);
    dl_iterate_phdr(dropCode, nullptr);
}

} // namespace lumo::freedesktop
