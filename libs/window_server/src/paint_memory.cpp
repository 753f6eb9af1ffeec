#include "paint_memory.h"

#include <sys/mman.h>

#include <cstdint>

namespace qws {
namespace {

constexpr size_t kLargePage = size_t{2} << 20;

/** Pages of zeros, which are taken from the system when they are first painted. */
class Pages {
public:
    explicit Pages(size_t bytes) : m_length(bytes + kLargePage) {
        void *memory =
            ::mmap(nullptr, m_length, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
        if (memory != MAP_FAILED) m_memory = static_cast<unsigned char *>(memory);
    }
    Pages(const Pages &) = delete;
    Pages &operator=(const Pages &) = delete;
    ~Pages() {
        if (m_memory != nullptr) ::munmap(m_memory, m_length);
    }

    /// The first place that a large page can begin at; null when there is no memory. Only whole
    /// large pages are asked for, so that none is taken for a few rows at the end.
    unsigned char *bytes(size_t used) const {
        if (m_memory == nullptr) return nullptr;
        const size_t past = reinterpret_cast<uintptr_t>(m_memory) % kLargePage;
        unsigned char *first = m_memory + (kLargePage - past) % kLargePage;
        // Best effort: with small pages everything works as well.
        ::madvise(first, used / kLargePage * kLargePage, MADV_HUGEPAGE);
        return first;
    }

private:
    unsigned char *m_memory = nullptr;
    size_t m_length;
};

}  // namespace

QImage transparentImage(const QSize &size, QImage::Format format) {
    if (size.isEmpty()) return {};
    const qsizetype lineLength = qsizetype{size.width()} * sizeof(QRgb);
    const size_t used = static_cast<size_t>(lineLength) * static_cast<size_t>(size.height());
    auto *pages = new Pages(used);
    unsigned char *first = pages->bytes(used);
    const auto free = [](void *memory) { delete static_cast<Pages *>(memory); };
    if (first == nullptr) {
        free(pages);
        return {};
    }
    return QImage(first, size.width(), size.height(), lineLength, format, free, pages);
}

}  // namespace qws
