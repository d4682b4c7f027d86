/// @file
/// The engine behind the session: `dvFE`.
#pragma once

#include "app/engine.h"
#include "marvo.h"

namespace app {

/// Drives the exported front end for one window.
class MarvoEngine final : public Engine {
public:
    /// What a start takes from the settings.
    struct Options {
        int input = 0; ///< the capture device's number
        unsigned long ring_frames = 250;
        int delay_ms = 0;
        bool deinterlace = true;
    };

    /// Shows video in `videoArea`; posts `message` to `drain` in every tick, with the low 32 bits of the
    /// frame. Both windows outlive this object.
    MarvoEngine(HWND videoArea, HWND drain, unsigned message);
    MarvoEngine(const MarvoEngine&) = delete;
    MarvoEngine& operator=(const MarvoEngine&) = delete;
    /// Takes the engine apart and ends the messages.
    ~MarvoEngine() override;

    /// For the next `start`; the delay for the next replay.
    void set(const Options& options);
    /// The newest progress record.
    const play_info& info() const { return info_; }

    bool start() override;
    void stop() override;
    bool live() override;
    bool pause() override;
    bool resume() override;
    std::optional<FrameSpan> replay(const std::wstring& file, FrameSpan range, std::uint64_t at) override;
    bool setSpeed(double framesPerTick) override;
    bool seek(std::uint64_t frame) override;
    bool startRecord(const std::wstring& file) override;
    void stopRecord() override;
    bool call(const std::string& text) override;
    void log(const std::wstring& text) override;
    EngineState state() override;
    std::wstring explanation() const override { return explanation_; }

private:
    bool done(bool worked, const std::wstring& explanation = {});
    bool ready() const { return built_ || !playFile_.empty(); }
    bool open(const std::wstring& file, FrameSpan range);
    std::wstring whyNotPlayable(const std::wstring& file) const;

    HWND videoArea_;
    play_info info_;
    Options options_;
    std::wstring explanation_;
    bool built_ = false;    ///< on a camera
    std::wstring playFile_; ///< what a play graph alone was built for; empty: there is none
    bool recorded_ = false; ///< a recording has been started since
};

} // namespace app
