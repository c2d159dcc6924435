#include "Zorvane/Platform/CryptoKit/InsecureSHA1.hpp"

#include <memory>
#include <new>

extern "C" {
#include <libavutil/mem.h>
#include <libavutil/sha.h>
}

namespace zorvane {
namespace {

struct Free {
    void operator()(AVSHA* context) const noexcept { av_free(context); }
};

}  // namespace

SHA1Digest insecureSHA1(std::string_view bytes) {
    const std::unique_ptr<AVSHA, Free> context(av_sha_alloc());
    if (!context) {
        throw std::bad_alloc();
    }
    SHA1Digest digest{};
    av_sha_init(context.get(), static_cast<int>(digest.size() * 8));
    av_sha_update(context.get(), reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size());
    av_sha_final(context.get(), digest.data());
    return digest;
}

}  // namespace zorvane
