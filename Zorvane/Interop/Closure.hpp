// A callable for the user data of a C callback.
#pragma once

#include <functional>
#include <memory>
#include <utility>

namespace zorvane {

/// Keeps a callable alive at an address that stays the same, which a C function takes as user data:
///
///     const Closure<int> closure([](int value) { ... });
///     registerCallback([](int value, void* userData) { Closure<int>::Object::from(userData).invoke(value); },
///                      closure.pointer());
///
/// Copies share the callable; it goes with the last one. Whoever holds the pointer must have let go of it by then.
template <class Argument>
class Closure {
  public:
    struct Object {
        std::function<void(const Argument&)> invoke;

        /// The object behind a `pointer`.
        static const Object& from(void* pointer) { return *static_cast<const Object*>(pointer); }
    };

    explicit Closure(std::function<void(const Argument&)> invoke)
        : object_(std::make_shared<Object>(Object{std::move(invoke)})) {}

    void* pointer() const { return object_.get(); }

  private:
    std::shared_ptr<Object> object_;
};

}  // namespace zorvane
