// A phone service on a socket of its own, with phones that do as they are told.
#pragma once

#include <filesystem>
#include <map>
#include <mutex>
#include <set>
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
    enum class Manner { answers, hangs, encrypts } manner = Manner::answers;  ///< `encrypts` with a key nobody knows
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
    /// All that phones have been asked since the start.
    std::set<std::string> questions() const;

  private:
    void accept();
    void serve(int connection);
    std::string answer(int connection, const std::string& request, int& phoneID);
    std::string answerOfPhone(const std::string& request, const FakePhone& phone);
    std::string attachedMessage(int deviceID, const FakePhone& phone) const;
    void tellListeners(const std::string& message);

    const std::filesystem::path path_;
    const int socket_;
    mutable std::mutex mutex_;  // guards all below
    std::map<int, FakePhone> phones_;
    std::set<std::string> questions_;
    std::vector<int> connections_;
    std::vector<int> listeners_;
    std::vector<std::thread> threads_;
    std::thread acceptor_;
};

}  // namespace zorvane
