#include "app/window/picture_worker.h"

#include <algorithm>

namespace app {

namespace {

constexpr unsigned thumbnailWidth = 240;
/// For so long files stay open when nothing is wished for; a rolling file must then be free to go.
constexpr auto idle = std::chrono::seconds(1);

} // namespace

PictureWorker::PictureWorker(HWND window, UINT message)
    : window_(window), message_(message), thread_([this] { run(); }) {}

PictureWorker::~PictureWorker() {
    {
        const std::lock_guard guard(lock_);
        ending_ = true;
    }
    news_.notify_one();
    thread_.join();
}

void PictureWorker::wish(PictureUse use, const FrameAddress& address) {
    {
        const std::lock_guard guard(lock_);
        std::erase_if(wishes_, [&](const Wish& wish) {
            return wish.use == use && (use != PictureUse::thumbnail || wish.address == address);
        });
        const auto before =
            std::find_if(wishes_.begin(), wishes_.end(), [use](const Wish& wish) { return wish.use > use; });
        wishes_.insert(before, {use, address});
    }
    news_.notify_one();
}

bool PictureWorker::take(Result& result) {
    const std::lock_guard guard(lock_);
    if (results_.empty()) {
        return false;
    }
    result = std::move(results_.front());
    results_.pop_front();
    return true;
}

void PictureWorker::run() {
    CoInitializeEx(nullptr, COINIT_MULTITHREADED);
    std::unique_lock guard(lock_);
    while (!ending_) {
        if (wishes_.empty()) {
            if (news_.wait_for(guard, idle) == std::cv_status::timeout) {
                source_.close();
                news_.wait(guard, [this] { return ending_ || !wishes_.empty(); });
            }
            continue;
        }
        const Wish wish = wishes_.front();
        wishes_.pop_front();
        guard.unlock();
        Result result;
        make(wish, result);
        guard.lock();
        results_.push_back(std::move(result));
        PostMessageW(window_, message_, 0, 0);
    }
    guard.unlock();
    source_.close();
    decoder_.close();
    CoUninitialize();
}

void PictureWorker::make(const Wish& wish, Result& result) {
    result.use = wish.use;
    result.address = wish.address;
    if (source_.read(wish.address, bytes_) && decoder_.decode(bytes_.data(), bytes_.size(), result.picture) &&
        wish.use != PictureUse::still) {
        result.picture = shrunk(result.picture, thumbnailWidth);
    }
}

dvPicture shrunk(const dvPicture& picture, unsigned width) {
    const unsigned step = std::max(1u, (picture.width + width - 1) / width);
    dvPicture small;
    small.width = picture.width / step;
    small.height = picture.height / step;
    small.aspectNumerator = picture.aspectNumerator;
    small.aspectDenominator = picture.aspectDenominator;
    small.pixels.resize(size_t{4} * small.width * small.height);
    const unsigned area = step * step;
    for (unsigned y = 0; y < small.height; ++y) {
        for (unsigned x = 0; x < small.width; ++x) {
            unsigned sum[3] = {};
            for (unsigned i = 0; i < area; ++i) {
                const size_t column = x * step + i % step;
                const size_t row = y * step + i / step;
                const unsigned char* from = picture.pixels.data() + 4 * (row * picture.width + column);
                for (int c = 0; c < 3; ++c) {
                    sum[c] += from[c];
                }
            }
            unsigned char* to = small.pixels.data() + 4 * (size_t{y} * small.width + x);
            for (int c = 0; c < 3; ++c) {
                to[c] = static_cast<unsigned char>(sum[c] / area);
            }
        }
    }
    return small;
}

} // namespace app
