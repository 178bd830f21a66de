#include "host/workers/Worker.h"

#include "host/base/ExitStatus.h"
#include "host/base/SystemText.h"

#include <cstdlib>

namespace host {

constexpr size_t kFixedTexts = 5;

static void Append(MessageTexts *texts, char mark, const std::vector<std::string> &lines) {
    for (const std::string &line : lines)
        texts->push_back(mark + line);
}

MessageTexts PackResult(const PhotoResult &result) {
    MessageTexts texts = {std::to_string(static_cast<int>(result.state)), std::to_string(result.status),
                          result.reason, std::to_string(result.lights), std::to_string(result.stars)};
    Append(&texts, 'l', result.losses);
    Append(&texts, 'n', result.notes);
    Append(&texts, 'b', result.boxes);
    if (result.after.width > 0) {
        texts.push_back('1' + PackSmallPicture(result.before));
        texts.push_back('2' + PackSmallPicture(result.after));
    }
    return texts;
}

bool UnpackResult(const MessageTexts &texts, PhotoResult *result) {
    if (texts.size() < kFixedTexts)
        return false;
    const int state = std::atoi(texts[0].c_str());
    if (state < 0 || state > static_cast<int>(PhotoState::kPlanned))
        return false;
    result->state = static_cast<PhotoState>(state);
    result->status = std::atoi(texts[1].c_str());
    result->reason = texts[2];
    result->lights = std::atoll(texts[3].c_str());
    result->stars = std::atoll(texts[4].c_str());
    for (size_t i = kFixedTexts; i < texts.size(); i++) {
        const char mark = texts[i].empty() ? ' ' : texts[i][0];
        if (mark == '1' || mark == '2') {
            if (!UnpackSmallPicture(texts[i].substr(1), mark == '1' ? &result->before : &result->after))
                return false;
        } else if (mark != ' ') {
            (mark == 'l'   ? result->losses
             : mark == 'n' ? result->notes
                           : result->boxes)
                .push_back(texts[i].substr(1));
        }
    }
    return true;
}

int ServePhotos(const PhotoResult &start, const PhotoServer &serve) {
    const HANDLE in = GetStdHandle(STD_INPUT_HANDLE), out = GetStdHandle(STD_OUTPUT_HANDLE);
    SetStdHandle(STD_OUTPUT_HANDLE, GetStdHandle(STD_ERROR_HANDLE)); // the pipe is for messages alone
    SetConsoleCtrlHandler(nullptr, TRUE);                            // what Ctrl+C means, the batch says
    bool isHeard = SendTexts(out, PackResult(start));
    MessageTexts task;
    while (isHeard && start.state == PhotoState::kDone && ReceiveTexts(in, &task) && task.size() == 2)
        isHeard = SendTexts(out, PackResult(serve(FromUtf8(task[0]), FromUtf8(task[1]))));
    return kExitDone;
}

} // namespace host
