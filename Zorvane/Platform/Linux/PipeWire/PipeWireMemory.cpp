#include "Zorvane/Platform/Linux/PipeWire/PipeWireMemory.hpp"

#include <linux/dma-buf.h>
#include <spa/buffer/buffer.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>

namespace zorvane {

PipeWireMemory::PipeWireMemory(const spa_buffer& buffer) {
    constexpr std::size_t most = std::tuple_size_v<PipeWirePieces>;
    const std::size_t count = std::min<std::size_t>(buffer.n_datas, most);
    pieces_.reserve(count);
    for (std::size_t index = 0; index < count; ++index) {
        pieces_.push_back(map(buffer.datas[index]));
    }
}

PipeWireMemory::~PipeWireMemory() {
    for (const Piece& piece : pieces_) {
        if (piece.mapping) {
            munmap(piece.mapping, piece.mappingSize);
        }
    }
}

PipeWireMemory::Piece PipeWireMemory::map(const spa_data& data) {
    Piece piece{.data = &data};
    if (data.type == SPA_DATA_MemPtr) {
        piece.memory = {static_cast<const std::byte*>(data.data), data.data ? data.maxsize : 0};
        return piece;
    }
    const std::size_t size = std::size_t{data.mapoffset} + data.maxsize;
    const int descriptor = static_cast<int>(data.fd);
    // What lies behind the end of a file can't be read: the process would be killed for trying.
    const off_t fileSize = lseek(descriptor, 0, SEEK_END);
    const bool isWhole = fileSize >= 0 && static_cast<std::size_t>(fileSize) >= size;
    if ((data.type != SPA_DATA_MemFd && data.type != SPA_DATA_DmaBuf) || data.maxsize == 0 || !isWhole) {
        return piece;
    }
    void* mapping = mmap(nullptr, size, PROT_READ, MAP_SHARED, descriptor, 0);
    if (mapping != MAP_FAILED) {
        piece.mapping = mapping;
        piece.mappingSize = size;
        piece.memory = {static_cast<const std::byte*>(mapping) + data.mapoffset, data.maxsize};
    }
    return piece;
}

PipeWirePieces PipeWireMemory::pieces() const {
    PipeWirePieces now;
    for (std::size_t index = 0; index < pieces_.size(); ++index) {
        // The chunk stands in memory that its producer may write at any time.
        const volatile spa_chunk* chunk = pieces_[index].data->chunk;
        if (chunk && !(chunk->flags & SPA_CHUNK_FLAG_CORRUPTED)) {
            now[index] = {.memory = pieces_[index].memory,
                          .offset = chunk->offset,
                          .size = chunk->size,
                          .bytesPerRow = chunk->stride};
        }
    }
    return now;
}

void PipeWireMemory::beginReading() const {
    synchronize(DMA_BUF_SYNC_START | DMA_BUF_SYNC_READ);
}

void PipeWireMemory::endReading() const {
    synchronize(DMA_BUF_SYNC_END | DMA_BUF_SYNC_READ);
}

/// Some producers call any file a device's buffer; such a one needs no care, and says so with an error.
void PipeWireMemory::synchronize(unsigned long long flags) const {
    for (const Piece& piece : pieces_) {
        if (piece.data->type == SPA_DATA_DmaBuf && piece.mapping) {
            const dma_buf_sync request{.flags = flags};
            while (ioctl(static_cast<int>(piece.data->fd), DMA_BUF_IOCTL_SYNC, &request) < 0 && errno == EINTR) {
            }
        }
    }
}

}  // namespace zorvane
