#include "Zorvane/Platform/Linux/PipeWire/PipeWireModel.hpp"

namespace zorvane {

void PipeWireModel::connected(pw_core& core) {
    core_ = &core;
    static const pw_core_events coreEvents{.version = PW_VERSION_CORE_EVENTS, .done = onDone};
    pw_core_add_listener(core_, coreHook_.emplace().get(), &coreEvents, this);
    static const pw_registry_events registryEvents{
        .version = PW_VERSION_REGISTRY_EVENTS, .global = onGlobal, .global_remove = onGlobalRemoved};
    registry_.emplace(pw_core_get_registry(core_, PW_VERSION_REGISTRY, 0)).listen(&registryEvents, this);
    objectAsked();
}

void PipeWireModel::disconnected() {
    clear();
    registry_.reset();
    coreHook_.reset();
    core_ = nullptr;
    question_.reset();
    isQuestionLate_ = false;
    publish(false);
}

void PipeWireModel::objectChanged() {
    if (!question_) {
        askServer();
    }
}

void PipeWireModel::objectAsked() {
    isQuestionLate_ = question_.has_value();
    objectChanged();
}

std::uint32_t PipeWireModel::ownClient() const {
    return pw_proxy_get_bound_id(reinterpret_cast<pw_proxy*>(pw_core_get_client(core_)));
}

void PipeWireModel::askServer() {
    isQuestionLate_ = false;
    question_ = pw_core_sync(core_, PW_ID_CORE, 0);
}

void PipeWireModel::onDone(void* data, std::uint32_t id, int sequence) {
    auto& self = *static_cast<PipeWireModel*>(data);
    if (id == PW_ID_CORE && sequence == self.question_) {
        self.serverAnswered();
    }
}

void PipeWireModel::serverAnswered() {
    question_.reset();
    if (isQuestionLate_) {
        askServer();
    } else {
        publish(true);
    }
}

void PipeWireModel::onGlobal(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                             const spa_dict* properties) {
    auto& self = *static_cast<PipeWireModel*>(data);
    self.add(self.registry_->as<pw_registry>(), id, type, properties);
}

void PipeWireModel::onGlobalRemoved(void* data, std::uint32_t id) {
    auto& self = *static_cast<PipeWireModel*>(data);
    if (self.remove(id)) {
        self.objectChanged();
    }
}

}  // namespace zorvane
