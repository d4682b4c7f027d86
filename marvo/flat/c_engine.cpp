// The engine: building it, its window, taking it apart; the devices.
#include "marvo/com/capture_devices.h"
#include "marvo/core/text.h"
#include "marvo/flat/engine.h"
#include "marvo/flat/file_trouble.h"
#include "marvo/flat/guarded.h"
#include "marvo/flat/text.h"

#include <algorithm>
#include <iterator>

using namespace flat;

namespace {

using frontend::BuildStep;

struct StepText {
    BuildStep step;
    int code;
    const char* text;
};
constexpr StepText stepTexts[] = {
    {BuildStep::createSplitter, MARVO_E_SYSTEM, "The system has no DV splitter."},
    {BuildStep::frameStore, MARVO_E_MEMORY,
     "There is not enough memory for the ring (or it has no frames); see the setting engine.recframes."},
    {BuildStep::playFilter, MARVO_E_SYSTEM, "The camera says no format of its frames; is it switched on?"},
    {BuildStep::createDecoder, MARVO_E_SYSTEM, "The system has no DV video decoder."},
    {BuildStep::createRenderer, MARVO_E_SYSTEM, "The system has no video renderer, or there is no display."},
    {BuildStep::connectDecoder, MARVO_E_SYSTEM, "The DV video decoder does not take the frames."},
    {BuildStep::connectRenderer, MARVO_E_SYSTEM, "The video renderer does not take the decoder's picture."},
};

[[noreturn]] void failBuild() {
    const BuildStep step = dvFE.failedStep();
    if (step == BuildStep::captureDevice) {
        fail(MARVO_E_DEVICE,
             vcore::format("There is no capture device number %d; see the setting dv.input and "
                           "marvo_device_count.",
                           dvFE.settings().input));
    }
    const auto* const row = std::find_if(std::begin(stepTexts), std::end(stepTexts),
                                         [step](const StepText& text) { return text.step == step; });
    if (row != std::end(stepTexts)) {
        fail(row->code, row->text);
    }
    fail(MARVO_E_SYSTEM, vcore::format("The engine could not be built: step %d failed; marvo.log tells more.",
                                       static_cast<int>(step)));
}

void show(void* window) {
    if (dvFE.showWindow(static_cast<HWND>(window))) {
        return;
    }
    if (dvFE.built() == dvFrontEnd::Built::nothing || dvFE.failedStep() != BuildStep::none) {
        failBuild();
    }
    fail(MARVO_E_SYSTEM,
         "The picture cannot be put into the window; does the window's thread take its messages?");
}

} // namespace

int MARVO_CALL marvo_init(void* window) {
    return guarded([&] {
        const Engine::WindowCommand command(window);
        if (!dvFE.init(static_cast<HWND>(window), false)) {
            failBuild();
        }
    });
}

int MARVO_CALL marvo_play_init(void* window, marvo_u64 from, marvo_u64 to, const char* file) {
    return guarded([&] {
        const std::wstring name = wideText(file, "file name");
        Engine::WindowCommand command(window);
        if (!dvFE.playinitWide(static_cast<HWND>(window), from, to, name.c_str())) {
            explainFile(name, from, to);
            if (dvFE.failedStep() == BuildStep::playFilter) {
                fail(MARVO_E_FORMAT, quoted(name) + " cannot be replayed by that name or from that drive; "
                                                    "marvo_export makes an AVI file of it that can.");
            }
            failBuild();
        }
        command.replayBegun();
    });
}

int MARVO_CALL marvo_done(void) {
    return guarded([] {
        const Engine::WindowCommand command;
        dvFE.done();
    });
}

int MARVO_CALL marvo_show(void* window) {
    return guarded([&] {
        const Engine::WindowCommand command(window);
        if (window) {
            show(window);
        } else {
            dvFE.hideWindow();
        }
    });
}

int MARVO_CALL marvo_hide(void) {
    return guarded([] {
        const Engine::WindowCommand command;
        dvFE.hideWindow();
    });
}

int MARVO_CALL marvo_set_video_size(int width, int height) {
    return guarded([&] {
        const Engine::WindowCommand command;
        command.needBuilt();
        if (width < 0 || height < 0) {
            fail(MARVO_E_RANGE, vcore::format("There is no picture of %d x %d pixels.", width, height));
        }
        if (!dvFE.setSize(width, height)) {
            fail(MARVO_E_REFUSED, "The picture has no window, or that does not answer.");
        }
    });
}

int MARVO_CALL marvo_set_video_pos(int x, int y) {
    return guarded([&] {
        const Engine::WindowCommand command;
        command.needBuilt();
        if (!dvFE.setPos(x, y)) {
            fail(MARVO_E_REFUSED, "The picture has no window, or that does not answer.");
        }
    });
}

int MARVO_CALL marvo_window_destroyed(void) {
    return guarded([] {
        const Engine::WindowCommand command;
        dvFE.destroyEvent();
    });
}

int MARVO_CALL marvo_device_count(marvo_u32* count) {
    return guarded([&] {
        if (!count) {
            fail(MARVO_E_ARGUMENT, "There is no place for the number: it is null.");
        }
        vwin::initialiseCom();
        *count = static_cast<marvo_u32>(vwin::CaptureDevices().count());
    });
}

int MARVO_CALL marvo_device_name(marvo_u32 number, char* buffer, marvo_u32 capacity, marvo_u32* needed) {
    return guarded([&] {
        vwin::initialiseCom();
        const vwin::CaptureDevices devices;
        const vwin::com_<IMoniker> device = devices.byNumber(number);
        if (!device) {
            fail(MARVO_E_UNKNOWN, vcore::format("There is no capture device number %u; there are %u.", number,
                                                static_cast<unsigned>(devices.count())));
        }
        answer(utf8(vwin::CaptureDevices::friendlyName(device.ptr())), buffer, capacity, needed);
    });
}
