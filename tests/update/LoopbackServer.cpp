#include "tests/update/LoopbackServer.h"

#include <winsock2.h>

#include <windows.h>

namespace {

constexpr int kPollSlice = 20; // milliseconds

bool IsReadable(SOCKET socket) {
    fd_set sockets;
    FD_ZERO(&sockets);
    FD_SET(socket, &sockets);
    timeval slice = {0, kPollSlice * 1000};
    return select(0, &sockets, nullptr, nullptr, &slice) == 1;
}

std::string ReadHead(SOCKET socket, const std::atomic<bool> &stopping) {
    std::string head;
    char bytes[1024];
    while (head.find("\r\n\r\n") == std::string::npos && !stopping) {
        if (!IsReadable(socket))
            continue;
        const int got = recv(socket, bytes, sizeof bytes, 0);
        if (got <= 0)
            break;
        head.append(bytes, static_cast<size_t>(got));
    }
    return head;
}

} // namespace

bool ServedConnection::Send(const std::string &bytes) const {
    const int length = static_cast<int>(bytes.size());
    return !*stopping && send(static_cast<SOCKET>(socket), bytes.data(), length, 0) == length;
}

void ServedConnection::AwaitClose() const {
    char byte;
    while (!*stopping)
        if (IsReadable(static_cast<SOCKET>(socket)) && recv(static_cast<SOCKET>(socket), &byte, 1, 0) <= 0)
            return;
}

LoopbackServer::LoopbackServer(Answer howToAnswer) : answer(std::move(howToAnswer)) {
    WSADATA data;
    WSAStartup(MAKEWORD(2, 2), &data);
    const SOCKET socket = ::socket(AF_INET, SOCK_STREAM, IPPROTO_TCP);
    sockaddr_in name = {};
    name.sin_family = AF_INET;
    name.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    bind(socket, reinterpret_cast<const sockaddr *>(&name), sizeof name);
    int size = sizeof name;
    getsockname(socket, reinterpret_cast<sockaddr *>(&name), &size);
    port = ntohs(name.sin_port);
    listen(socket, 8);
    listener = socket;
    thread = std::thread([this] { Serve(); });
}

LoopbackServer::~LoopbackServer() {
    stopping = true;
    thread.join();
    closesocket(static_cast<SOCKET>(listener));
    WSACleanup();
}

void LoopbackServer::Serve() {
    while (!stopping) {
        if (!IsReadable(static_cast<SOCKET>(listener)))
            continue;
        const SOCKET socket = accept(static_cast<SOCKET>(listener), nullptr, nullptr);
        std::string head = ReadHead(socket, stopping);
        {
            const std::lock_guard guard(lock);
            requests.push_back(std::move(head));
        }
        answer({socket, &stopping});
        closesocket(socket);
    }
}

std::string LoopbackServer::Address() const {
    return "http://127.0.0.1:" + std::to_string(port) + "/version.txt";
}

std::vector<std::string> LoopbackServer::Requests() const {
    const std::lock_guard guard(lock);
    return requests;
}

std::string HttpAnswer(const std::string &body, const std::string &status, const std::string &headers) {
    return "HTTP/1.1 " + status + "\r\nContent-Type: text/plain\r\n" + headers +
           "Content-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body;
}
