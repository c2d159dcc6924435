#include "Zorvane/Internal/Recorders/AudioRecorderExpansion.hpp"

#include <memory>
#include <utility>

#include "Zorvane/Internal/Recorders/AudioFileRecorder.hpp"
#include "Zorvane/Internal/Recorders/AudioStreamRecorder.hpp"
#include "Zorvane/Internal/Recorders/SCKAudioRecorder.hpp"

namespace zorvane {

Task<Recorders> createRecorders(MicrophoneFileSchemaItem item, RecorderContext context) {
    const OutputDescription output = context.claimOutput(item.outputOptions.form(), fallbackFilename(item));
    Recorders recorders;
    recorders.push_back(std::make_shared<AudioFileRecorder>(item.id, output, item.microphoneID, context));
    co_return recorders;
}

Task<Recorders> createRecorders(MicrophoneStreamSchemaItem item, RecorderContext context) {
    Recorders recorders;
    recorders.push_back(std::make_shared<AudioStreamRecorder>(item.id, item.microphoneID, item.callback, context));
    co_return recorders;
}

Task<Recorders> createRecorders(SystemAudioSchemaItem item, RecorderContext context) {
    OutputDescription output = context.claimOutput(item.outputOptions.form(), fallbackFilename(item));
    std::vector<std::int32_t> excluded = item.excludedApplicationIDs.value_or(std::vector<std::int32_t>());
    SCContentFilter filter =
        co_await createContentFilter(item.includedApplicationIDs, std::move(excluded), context.logger);
    SCKAudioRecorderParameters parameters{.id = item.id,
                                          .outputDescription = std::move(output),
                                          .filter = std::move(filter),
                                          .excludeCurrentProcess = item.excludeCurrentProcess,
                                          .context = std::move(context)};
    Recorders recorders;
    recorders.push_back(std::make_shared<SCKAudioRecorder>(std::move(parameters)));
    co_return recorders;
}

}  // namespace zorvane
