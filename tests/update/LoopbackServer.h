// A web server of a few lines on the loopback address, which answers as a test wants.
#pragma once

#include <atomic>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

// One connection; writing and reading end when the client or the server has gone.
struct ServedConnection {
    uintptr_t socket;
    const std::atomic<bool> *stopping;

    bool Send(const std::string &bytes) const;
    // Waits until the client closes, or the server stops.
    void AwaitClose() const;
};

class LoopbackServer {
public:
    using Answer = std::function<void(const ServedConnection &connection)>;

    explicit LoopbackServer(Answer answer);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer &) = delete;
    LoopbackServer &operator=(const LoopbackServer &) = delete;

    std::string Address() const; // "http://127.0.0.1:port/version.txt"
    // The head of every request so far.
    std::vector<std::string> Requests() const;

private:
    void Serve();

    Answer answer;
    uintptr_t listener;
    int port = 0;
    std::atomic<bool> stopping{false};
    mutable std::mutex lock;
    std::vector<std::string> requests;
    std::thread thread;
};

// "HTTP/1.1 200 OK" and so on.
std::string HttpAnswer(const std::string &body, const std::string &status = "200 OK",
                       const std::string &headers = "");
