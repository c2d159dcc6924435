#include "Zorvane/ZVRecorder.hpp"

#include <fmt/format.h>

#include "Zorvane/Internal/Conductor.hpp"
#include "Zorvane/Internal/Logger.hpp"
#include "Zorvane/Internal/ShortID.hpp"
#include "Zorvane/Internal/ZVUserPreferred.hpp"

namespace zorvane {
namespace {

ZVRecorder::OnAbort logOnly(const Logger& logger) {
    return [logger](const ZVRecorder::AbortReason& reason) {
        logger.warning("Aborted with no abort handler set.", [&] {
            return LogMetadata{{"reason", reason.logErrorDescription()}};
        });
    };
}

}  // namespace

// Kept by the recorder and by each of its tasks. The tasks' bodies are static and take a share of it.
struct ZVRecorder::Implementation {
    using Shared = std::shared_ptr<const Implementation>;

    std::string id;
    Schema schema;
    Logger logger;
    Settings settings;
    std::shared_ptr<Conductor> conductor;

    static Shared make(Schema schema, Settings settings, OnAbort onAbort);
    static ZVTask<> setAbortHander(Shared self, OnAbort handler);
    static ZVTask<> setNoticeHandler(Shared self, OnNotice handler);
    static ZVTask<> prepare(Shared self);
    static ZVTask<> start(Shared self);
    static ZVTask<Result> stop(Shared self);

    /// Logs a failure.
    template <class T>
    void report(const ZVOutcome<T>& outcome, std::string_view action) const {
        if (!outcome.isSuccess()) {
            logger.error(
                [&] { return fmt::format("Failed to {}: {}", action, zorvane::debugDescription(outcome.error())); });
        }
    }
};

ZVRecorder::Implementation::Shared ZVRecorder::Implementation::make(Schema schema, Settings settings, OnAbort onAbort) {
    const std::string id = ShortID::make();
    const Logger logger = Logger::forFile(id);
    if (!onAbort) {
        onAbort = logOnly(logger);
    }
    auto conductor = Conductor::make(id, schema, logger, std::move(onAbort));
    return std::make_shared<const Implementation>(
        Implementation{id, std::move(schema), logger, settings, std::move(conductor)});
}

ZVTask<> ZVRecorder::Implementation::setAbortHander(Shared self, OnAbort handler) {
    if (!handler) {
        handler = logOnly(self->logger);
    }
    const ZVOutcome<> outcome = co_await self->conductor->setOnAbort(std::move(handler)).outcome();
    self->report(outcome, "set abort handler");
    outcome.value();
}

ZVTask<> ZVRecorder::Implementation::setNoticeHandler(Shared self, OnNotice handler) {
    co_await self->conductor->setOnNotice(std::move(handler));
}

ZVTask<> ZVRecorder::Implementation::prepare(Shared self) {
    co_await self->conductor->prepare(ShortID::make());
}

ZVTask<> ZVRecorder::Implementation::start(Shared self) {
    const ZVOutcome<> outcome = co_await self->conductor->start(ShortID::make()).outcome();
    self->report(outcome, "start");
    outcome.value();
    if (self->settings.updatesUserPreferred) {
        ZVUserPreferred::shared()->updateInBackground(self->schema);
    }
}

ZVTask<ZVRecorder::Result> ZVRecorder::Implementation::stop(Shared self) {
    ZVOutcome<Result> outcome = co_await self->conductor->stop(ShortID::make()).outcome();
    self->report(outcome, "stop");
    co_return std::move(outcome).value();
}

ZVRecorder::ZVRecorder(std::vector<SchemaItem> items, std::optional<std::filesystem::path> outputDirectory,
                       std::optional<Settings> settings, OnAbort onAbort)
    : implementation_(Implementation::make(Schema{std::move(outputDirectory), std::move(items)},
                                           settings.value_or(Settings()), std::move(onAbort))) {}

ZVRecorder::~ZVRecorder() = default;
ZVRecorder::ZVRecorder(ZVRecorder&&) noexcept = default;
ZVRecorder& ZVRecorder::operator=(ZVRecorder&&) noexcept = default;

const std::string& ZVRecorder::id() const {
    return implementation_->id;
}

const ZVRecorder::Schema& ZVRecorder::schema() const {
    return implementation_->schema;
}

const ZVRecorder::Settings& ZVRecorder::settings() const {
    return implementation_->settings;
}

const std::filesystem::path& ZVRecorder::bundleURL() const {
    return implementation_->conductor->bundle().url();
}

ZVTask<> ZVRecorder::setAbortHander(OnAbort handler) {
    return Implementation::setAbortHander(implementation_, std::move(handler));
}

ZVTask<> ZVRecorder::setNoticeHandler(OnNotice handler) {
    return Implementation::setNoticeHandler(implementation_, std::move(handler));
}

ZVTask<> ZVRecorder::prepare() {
    return Implementation::prepare(implementation_);
}

ZVTask<> ZVRecorder::start() {
    return Implementation::start(implementation_);
}

ZVTask<ZVRecorder::Result> ZVRecorder::stop() {
    return Implementation::stop(implementation_);
}

ZVRecorder::Statistics ZVRecorder::statistics() const {
    return implementation_->conductor->statistics();
}

std::string ZVRecorder::debugDescription() const {
    return fmt::format("ZVRecorder: {} recorder items", schema().items.size());
}

std::string ZVRecorder::AbortReason::logErrorDescription() const {
    switch (kind_) {
        case Kind::userStopped:
            return "userStopped";
        case Kind::interrupted:
            return "interrupted: " + zorvane::debugDescription(error_);
        case Kind::failed:
            return "failed: " + zorvane::debugDescription(error_);
    }
    return "";
}

ZVRecorder::PartialResultError::PartialResultError(Result result, GroupedErrors groupedErrors)
    : ZVDescribedError(groupedErrors.localizedDescription(), groupedErrors.debugDescription()),
      result_(std::make_shared<const Result>(std::move(result))),
      groupedErrors_(std::move(groupedErrors)) {}

}  // namespace zorvane
