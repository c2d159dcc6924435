#include "Zorvane/Internal/Concurrency/ThreadName.hpp"

#include <pthread.h>

#include <string>

namespace zorvane {

namespace {

constexpr std::size_t longestName = 15;

}  // namespace

void setCurrentThreadName(std::string_view name) {
    if (name.size() > longestName) {
        name.remove_prefix(name.rfind('.') + 1);  // rfind's npos + 1 is 0: a name without a dot stays whole
    }
    pthread_setname_np(pthread_self(), std::string(name.substr(0, longestName)).c_str());
}

ThreadNameScope::ThreadNameScope(std::string_view name) {
    if (pthread_getname_np(pthread_self(), previous_, sizeof previous_) != 0) {
        previous_[0] = '\0';
    }
    setCurrentThreadName(name);
}

ThreadNameScope::~ThreadNameScope() {
    pthread_setname_np(pthread_self(), previous_);
}

}  // namespace zorvane
