#include "tests/Support/PipeWireTestClient.hpp"

#include <pipewire/extensions/metadata.h>
#include <pipewire/pipewire.h>
#include <spa/monitor/device.h>
#include <spa/monitor/utils.h>

#include <stdexcept>
#include <string_view>

#include "tests/Support/PipeWireRoutePods.hpp"

namespace zorvane {
namespace {

/// A dictionary that lives as long as its texts.
std::vector<spa_dict_item> itemsOf(const PipeWireTestClient::Properties& properties) {
    std::vector<spa_dict_item> items;
    for (const auto& [key, value] : properties) {
        items.push_back({key.c_str(), value.c_str()});
    }
    return items;
}

spa_dict dictionaryOf(const std::vector<spa_dict_item>& items) {
    return {.flags = 0, .n_items = static_cast<std::uint32_t>(items.size()), .items = items.data()};
}

/// A card with nothing but routes, as a driver of a card would offer it.
class Card {
  public:
    Card(PipeWireTestClient::Properties properties, const PipeWireRoutes& routes)
        : properties_(std::move(properties)), routes_(routes) {
        static const spa_device_methods methods{
            .version = SPA_VERSION_DEVICE_METHODS, .add_listener = addListener, .sync = sync, .enum_params = enumerate};
        device.iface = {SPA_TYPE_INTERFACE_Device, SPA_VERSION_DEVICE, {&methods, this}};
        spa_hook_list_init(&listeners_);
    }
    Card(const Card&) = delete;
    Card& operator=(const Card&) = delete;

    void setRoutes(const PipeWireRoutes& routes) {
        routes_ = routes;
        for (spa_param_info& parameter : parameters_) {
            parameter.flags ^= SPA_PARAM_INFO_SERIAL;
        }
        tell(SPA_DEVICE_CHANGE_MASK_PARAMS);
    }

    spa_device device{};

  private:
    static int addListener(void* self, spa_hook* listener, const spa_device_events* events, void* data) {
        auto& card = *static_cast<Card*>(self);
        spa_hook_list others;
        spa_hook_list_isolate(&card.listeners_, &others, listener, events, data);
        card.tell(SPA_DEVICE_CHANGE_MASK_PROPS | SPA_DEVICE_CHANGE_MASK_PARAMS);
        spa_hook_list_join(&card.listeners_, &others);
        return 0;
    }

    static int sync(void* self, int sequence) {
        spa_device_emit_result(&static_cast<Card*>(self)->listeners_, sequence, 0, 0, nullptr);
        return 0;
    }

    static int enumerate(void* self, int sequence, std::uint32_t parameter, std::uint32_t start, std::uint32_t count,
                         const spa_pod*) {
        auto& card = *static_cast<Card*>(self);
        const bool isActive = parameter == SPA_PARAM_Route;
        const auto& routes = isActive ? card.routes_.active : card.routes_.possible;
        for (std::uint32_t index = start; index < routes.size() && index - start < count; ++index) {
            const RoutePod pod(routes[index], parameter);
            const spa_result_device_params result{
                .id = parameter, .index = index, .next = index + 1, .param = const_cast<spa_pod*>(pod.get())};
            spa_device_emit_result(&card.listeners_, sequence, 0, SPA_RESULT_TYPE_DEVICE_PARAMS, &result);
        }
        return 0;
    }

    void tell(std::uint64_t changes) {
        const auto items = itemsOf(properties_);
        const spa_dict dictionary = dictionaryOf(items);
        const spa_device_info info{.version = SPA_VERSION_DEVICE_INFO,
                                   .change_mask = changes,
                                   .props = &dictionary,
                                   .params = parameters_,
                                   .n_params = parameterCount};
        spa_device_emit_info(&listeners_, &info);
    }

    const PipeWireTestClient::Properties properties_;
    PipeWireRoutes routes_;
    static constexpr std::uint32_t parameterCount = 2;
    spa_param_info parameters_[parameterCount] = {{SPA_PARAM_Route, SPA_PARAM_INFO_READ},
                                                  {SPA_PARAM_EnumRoute, SPA_PARAM_INFO_READ}};
    spa_hook_list listeners_{};
};

}  // namespace

struct PipeWireTestClient::State {
    /// The loop stands still as long as it lives.
    class Lock {
      public:
        explicit Lock(State& state) : loop_(state.loop) { pw_thread_loop_lock(loop_); }
        Lock(const Lock&) = delete;
        Lock& operator=(const Lock&) = delete;
        ~Lock() { pw_thread_loop_unlock(loop_); }

      private:
        pw_thread_loop* const loop_;
    };

    static void onDone(void* data, std::uint32_t, int sequence) {
        auto& self = *static_cast<State*>(data);
        self.answered = sequence;
        pw_thread_loop_signal(self.loop, false);
    }

    static void onError(void* data, std::uint32_t, int, int, const char* message) {
        auto& self = *static_cast<State*>(data);
        self.error = message;
        pw_thread_loop_signal(self.loop, false);
    }

    static void onGlobal(void* data, std::uint32_t id, std::uint32_t, const char* type, std::uint32_t,
                         const spa_dict* properties) {
        auto& self = *static_cast<State*>(data);
        if (const char* alias = properties ? spa_dict_lookup(properties, PW_KEY_PORT_ALIAS) : nullptr) {
            self.ports[alias] = id;
        }
        const char* name = properties ? spa_dict_lookup(properties, PW_KEY_METADATA_NAME) : nullptr;
        if (std::string_view(type) == PW_TYPE_INTERFACE_Metadata && name && std::string_view(name) == "default") {
            self.metadata =
                static_cast<pw_metadata*>(pw_registry_bind(self.registry, id, type, PW_VERSION_METADATA, 0));
        }
    }

    /// With the loop locked. Twice, since the server tells of an object's number after it has made it.
    void awaitServer() {
        for (int round = 0; round < 2; ++round) {
            const int question = pw_core_sync(core, PW_ID_CORE, 0);
            while (answered != question && error.empty()) {
                pw_thread_loop_wait(loop);
            }
        }
        if (!error.empty()) {
            throw std::runtime_error("PipeWire: " + error);
        }
    }

    std::uint32_t keep(void* object) {
        if (!object) {
            throw std::runtime_error("PipeWire makes no such object");
        }
        awaitServer();
        auto* proxy = static_cast<pw_proxy*>(object);
        const std::uint32_t number = pw_proxy_get_bound_id(proxy);
        proxies[number] = proxy;
        return number;
    }

    pw_thread_loop* loop = nullptr;
    pw_context* context = nullptr;
    pw_core* core = nullptr;
    spa_hook coreHook{};
    pw_registry* registry = nullptr;
    spa_hook registryHook{};
    pw_metadata* metadata = nullptr;
    int answered = -1;
    std::string error;
    std::map<std::string, std::uint32_t> ports;  // by their names with their nodes'
    std::map<std::uint32_t, pw_proxy*> proxies;
    std::map<std::uint32_t, std::unique_ptr<Card>> cards;
};

PipeWireTestClient::PipeWireTestClient() : state_(std::make_unique<State>()) {
    pw_init(nullptr, nullptr);
    State& state = *state_;
    state.loop = pw_thread_loop_new("test-client", nullptr);
    state.context = pw_context_new(pw_thread_loop_get_loop(state.loop), nullptr, 0);
    state.core = pw_context_connect(state.context, nullptr, 0);
    if (!state.core) {
        throw std::runtime_error("there is no PipeWire to connect to");
    }
    static const pw_core_events coreEvents{
        .version = PW_VERSION_CORE_EVENTS, .done = State::onDone, .error = State::onError};
    pw_core_add_listener(state.core, &state.coreHook, &coreEvents, &state);
    static const pw_registry_events registryEvents{.version = PW_VERSION_REGISTRY_EVENTS, .global = State::onGlobal};
    state.registry = pw_core_get_registry(state.core, PW_VERSION_REGISTRY, 0);
    pw_registry_add_listener(state.registry, &state.registryHook, &registryEvents, &state);
    pw_thread_loop_start(state.loop);
    const State::Lock lock(state);
    state.awaitServer();
}

PipeWireTestClient::~PipeWireTestClient() {
    pw_thread_loop_stop(state_->loop);
    for (const auto& [number, proxy] : state_->proxies) {
        pw_proxy_destroy(proxy);
    }
    if (state_->metadata) {
        pw_proxy_destroy(reinterpret_cast<pw_proxy*>(state_->metadata));
    }
    pw_proxy_destroy(reinterpret_cast<pw_proxy*>(state_->registry));
    pw_core_disconnect(state_->core);
    pw_context_destroy(state_->context);
    pw_thread_loop_destroy(state_->loop);
}

std::uint32_t PipeWireTestClient::addNode(Properties properties) {
    properties.try_emplace("factory.name", "support.null-audio-sink");
    properties.try_emplace("media.class", "Audio/Source");
    const auto items = itemsOf(properties);
    const spa_dict dictionary = dictionaryOf(items);
    const State::Lock lock(*state_);
    return state_->keep(
        pw_core_create_object(state_->core, "adapter", PW_TYPE_INTERFACE_Node, PW_VERSION_NODE, &dictionary, 0));
}

void PipeWireTestClient::removeNode(std::uint32_t node) {
    const State::Lock lock(*state_);
    pw_proxy_destroy(state_->proxies.at(node));
    state_->proxies.erase(node);
    state_->awaitServer();
}

void PipeWireTestClient::link(const std::string& outputPort, const std::string& inputPort) {
    const State::Lock lock(*state_);
    const std::string output = std::to_string(state_->ports.at(outputPort));
    const std::string input = std::to_string(state_->ports.at(inputPort));
    const Properties properties{{PW_KEY_LINK_OUTPUT_PORT, output}, {PW_KEY_LINK_INPUT_PORT, input}};
    const auto items = itemsOf(properties);
    const spa_dict dictionary = dictionaryOf(items);
    state_->keep(
        pw_core_create_object(state_->core, "link-factory", PW_TYPE_INTERFACE_Link, PW_VERSION_LINK, &dictionary, 0));
}

std::uint32_t PipeWireTestClient::addCard(const Properties& properties, const PipeWireRoutes& routes) {
    auto card = std::make_unique<Card>(properties, routes);
    const auto items = itemsOf(properties);
    const spa_dict dictionary = dictionaryOf(items);
    const State::Lock lock(*state_);
    const std::uint32_t number =
        state_->keep(pw_core_export(state_->core, SPA_TYPE_INTERFACE_Device, &dictionary, &card->device, 0));
    state_->cards[number] = std::move(card);
    return number;
}

void PipeWireTestClient::setRoutes(std::uint32_t card, const PipeWireRoutes& routes) {
    const State::Lock lock(*state_);
    state_->cards.at(card)->setRoutes(routes);
    state_->awaitServer();
}

void PipeWireTestClient::setDefault(const std::string& key, const std::string& value) {
    const State::Lock lock(*state_);
    pw_metadata_set_property(state_->metadata, PW_ID_CORE, key.c_str(), "Spa:String:JSON", value.c_str());
    state_->awaitServer();
}

}  // namespace zorvane
