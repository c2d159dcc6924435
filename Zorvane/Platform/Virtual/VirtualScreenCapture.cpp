#include "Zorvane/Platform/Virtual/VirtualScreenCapture.hpp"

#include <cmath>

#include "Zorvane/Internal/Concurrency/Executor.hpp"
#include "Zorvane/Platform/Foundation/NSError.hpp"
#include "Zorvane/Platform/Virtual/VirtualStream.hpp"

namespace zorvane {
namespace {

VirtualAnswer nextAnswer(VirtualDesktopState& state) {
    ++state.contentRequests;
    if (state.conditions.contentAnswers.empty()) {
        return {};
    }
    VirtualAnswer answer = std::move(state.conditions.contentAnswers.front());
    state.conditions.contentAnswers.pop_front();
    return answer;
}

std::exception_ptr missingPermission() {
    return std::make_exception_ptr(NSError(SCStreamErrorDomain,
                                           static_cast<std::int64_t>(SCStreamErrorCode::userDeclined),
                                           {.localizedDescription = "Screen capture is not permitted."}));
}

// Content is that of the moment of the answer.
void answerNow(VirtualDesktop& desktop, const VirtualAnswer& answer, SCShareableContentScope scope,
               const SCScreenCapture::ContentHandler& handler) {
    std::exception_ptr error = answer.error;
    const SCShareableContent content = desktop.withState([&](VirtualDesktopState& state) {
        if (!state.conditions.allowsScreenCapture()) {
            error = missingPermission();
        }
        return state.scene.shareableContent(scope);
    });
    handler(error ? SCShareableContent{} : content, error);
}

}  // namespace

void VirtualScreenCapture::getShareableContent(SCShareableContentScope scope, ContentHandler handler) {
    VirtualAnswer answer = desktop_->withState(nextAnswer);
    if (answer.kind == VirtualAnswer::Kind::never) {
        return;
    }
    const std::chrono::nanoseconds delay(std::llround(answer.delay * 1e9));
    auto reply = [answer = std::move(answer), scope, handler = std::move(handler)](VirtualDesktop& desktop) {
        answerNow(desktop, answer, scope, handler);
    };
    if (delay > delay.zero()) {
        desktop_->schedule(desktop_->clock()->now() + delay, std::move(reply));
    } else {
        Executor::pool()->post([desktop = desktop_, reply = std::move(reply)] { reply(*desktop); });
    }
}

std::shared_ptr<SCStream> VirtualScreenCapture::makeStream(const SCContentFilter& filter,
                                                           const SCStreamConfiguration& configuration,
                                                           std::weak_ptr<SCStreamDelegate> delegate) {
    return VirtualStream::make(desktop_, filter, configuration, std::move(delegate));
}

void VirtualScreenCapture::restartCaptureService(std::function<void(std::exception_ptr)> handler) {
    std::exception_ptr error = desktop_->withState([](VirtualDesktopState& state) {
        ++state.serviceRestarts;
        return state.conditions.serviceRestartError;
    });
    Executor::pool()->post([handler = std::move(handler), error] { handler(error); });
}

}  // namespace zorvane
