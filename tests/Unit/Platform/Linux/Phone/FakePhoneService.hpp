// A phone service on a socket of its own, with phones that do as they are told.
#pragma once

#include <atomic>
#include <condition_variable>
#include <filesystem>
#include <map>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

namespace zorvane {

/// What a phone says.
struct FakePhone {
    std::string udid;
    std::string name = "A Phone";
    std::string model = "iPhone14,2";
    std::string connection = "USB";
    bool hasPairRecord = true;
    std::string sessionError;  ///< why it refuses a session; empty: it grants one
    bool hangs = false;        ///< it never answers
};

/// Listens from its making on. Any thread.
class FakePhoneService {
  public:
    explicit FakePhoneService(const std::filesystem::path& socket);
    /// Hangs up on everybody, and takes its socket away.
    ~FakePhoneService();

    void attach(int deviceID, const FakePhone& phone);
    /// Replaces what the phone says, and reports that its user has confirmed.
    void pair(int deviceID, const FakePhone& phone);
    void detach(int deviceID);

  private:
    void accept();
    void serve(int connection);
    std::string answer(int connection, const std::string& request, int& phoneID);
    std::string answerOfPhone(const std::string& request, const FakePhone& phone) const;
    std::string attachedMessage(int deviceID, const FakePhone& phone) const;
    void tellListeners(const std::string& message);

    const std::filesystem::path path_;
    const int socket_;
    std::mutex mutex_;  // guards all below
    std::map<int, FakePhone> phones_;
    std::vector<int> connections_;
    std::vector<int> listeners_;
    std::vector<std::thread> threads_;
    std::thread acceptor_;
};

}  // namespace zorvane
