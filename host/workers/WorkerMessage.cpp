#include "host/workers/WorkerMessage.h"

#include "host/base/ByteStream.h"

namespace host {

constexpr uint32_t kLongestMessage = 16u << 20;

static bool ReadExactly(HANDLE pipe, uint8_t *bytes, size_t length) {
    while (length > 0) {
        DWORD count = 0;
        if (!ReadFile(pipe, bytes, static_cast<DWORD>(length), &count, nullptr) || count == 0)
            return false;
        bytes += count;
        length -= count;
    }
    return true;
}

bool SendTexts(HANDLE pipe, const MessageTexts &texts) {
    Bytes body, message;
    for (const std::string &text : texts) {
        AppendNumber(body, static_cast<uint32_t>(text.size()));
        AppendBytes(body, text.data(), text.size());
    }
    AppendNumber(message, static_cast<uint32_t>(body.size()));
    AppendBytes(message, body.data(), body.size());
    DWORD written = 0;
    return body.size() <= kLongestMessage &&
           WriteFile(pipe, message.data(), static_cast<DWORD>(message.size()), &written, nullptr) &&
           written == message.size();
}

bool ReceiveTexts(HANDLE pipe, MessageTexts *texts) {
    uint8_t head[4];
    if (!ReadExactly(pipe, head, sizeof(head)) || NumberAt<uint32_t>(head) > kLongestMessage)
        return false;
    Bytes body(NumberAt<uint32_t>(head));
    if (!ReadExactly(pipe, body.data(), body.size()))
        return false;
    ByteReader reader = {body.data(), body.size()};
    texts->clear();
    while (reader.Left() > 0 && !reader.failed) {
        const Bytes text = reader.TakeBytes(reader.Take<uint32_t>());
        texts->emplace_back(text.begin(), text.end());
    }
    return !reader.failed;
}

} // namespace host
