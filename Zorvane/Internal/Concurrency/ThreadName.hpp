// Names of threads, as debuggers, traces and `top -H` show them.
#pragma once

#include <string_view>

namespace zorvane {

/// Names the calling thread. The system keeps 15 characters; of a longer name what is behind the last "." counts.
void setCurrentThreadName(std::string_view name);

/// Names the calling thread for a while: a pool thread bears the label of the queue whose job it runs.
class ThreadNameScope {
  public:
    explicit ThreadNameScope(std::string_view name);
    ~ThreadNameScope();
    ThreadNameScope(const ThreadNameScope&) = delete;
    ThreadNameScope& operator=(const ThreadNameScope&) = delete;

  private:
    char previous_[16];
};

}  // namespace zorvane
