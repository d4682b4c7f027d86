#include "marvo/com/com_fg.h"

#include "marvo/com/capture_devices.h"
#include "marvo/com/com_clsid.h"
#include "marvo/com/graph_walk.h"
#include "marvo/com/pins.h"
#include "marvo/core/process_state.h"

#include <cwchar>

namespace vwin {

namespace {

constexpr double unitsPerSecond = 10000000.0;
constexpr unsigned long stopWait_ms = 500;
constexpr unsigned long settleWait_ms = 2000;

/// A count of units as the graph takes it. False when it is no number or 64 bits do not hold it.
bool toUnits(double count, LONGLONG& units) {
    constexpr double limit = 9223372036854775808.0;
    if (!(count >= -limit && count < limit)) {
        return false;
    }
    units = static_cast<LONGLONG>(count);
    return true;
}

com_<IPin> sourcePin(IBaseFilter* filter) {
    for (const wchar_t* name : {L"Output", L"Stream 2"}) {
        if (com_<IPin> pin = findPin(filter, name, PINDIR_OUTPUT)) {
            return pin;
        }
    }
    for (const com_<IPin>& pin : freePins(filter, PINDIR_OUTPUT)) {
        if (offersDv(pin.ptr())) {
            return pin;
        }
    }
    return {};
}

bool connectToAnyInput(IGraphBuilder* graph, IPin* out, IBaseFilter* sink) {
    const std::vector<com_<IPin>> inputs = freePins(sink, PINDIR_INPUT);
    for (const com_<IPin>& in : inputs) {
        if (SUCCEEDED(graph->ConnectDirect(out, in.ptr(), nullptr))) {
            return true;
        }
    }
    for (const com_<IPin>& in : inputs) {
        if (SUCCEEDED(graph->Connect(out, in.ptr()))) {
            return true;
        }
    }
    return false;
}

/// The device that `selector`, the text after "input", stands for.
com_<IMoniker> selectDevice(const wchar_t* selector) {
    const CaptureDevices devices;
    if (*selector != 0 && std::wcschr(L":=?-_'#", *selector) != nullptr) {
        return devices.byName(selector + 1);
    }
    const bool hexadecimal = selector[0] == L'0' && (selector[1] == L'x' || selector[1] == L'X');
    const long number = std::wcstol(selector, nullptr, hexadecimal ? 16 : 10);
    return devices.byNumber(number < 0 ? 0 : static_cast<unsigned long>(number));
}

bool bindDevice(IMoniker* device, com_filter& filter) {
    com_<IBaseFilter> bound;
    if (device == nullptr || FAILED(device->BindToObject(nullptr, nullptr, __uuidof(IBaseFilter),
                                                         reinterpret_cast<void**>(bound.put())))) {
        static_cast<void>(bound.detach());
    }
    return filter.ref(bound.ptr());
}

} // namespace

com_fg::~com_fg() {
    if (!vcore::processEnding()) {
        done(false);
        return;
    }
    static_cast<void>(events_.detach());
    static_cast<void>(position_.detach());
    static_cast<void>(seeking_.detach());
    static_cast<void>(mediaControl_.detach());
    static_cast<void>(mediaFilter_.detach());
    static_cast<void>(builder_.detach());
    static_cast<void>(clock_.detach());
}

bool com_fg::init(bool plain) {
    runRequested_ = false;
    initialiseCom();
    if (builder_) {
        stopWithin(settleWait_ms);
        takeApart();
    }
    if (!builder_.create(CLSID_FilterGraph)) {
        return false;
    }
    position_.ref(builder_.ptr());
    seeking_.ref(builder_.ptr());
    mediaFilter_.ref(builder_.ptr());
    events_.ref(builder_.ptr());
    if (seeking_) {
        seeking_->SetTimeFormat(&TIME_FORMAT_FRAME);
    }
    if (!plain) {
        setSync(clock_.ptr());
        registerFG();
    }
    return true;
}

bool com_fg::done(bool wait) {
    bool stopped = true;
    if (builder_) {
        stopped = stopWithin(wait ? settleWait_ms : stopWait_ms);
        takeApart();
    }
    clock_.clear();
    return stopped;
}

bool com_fg::setSync(IReferenceClock* clock) {
    clock_ = com_<IReferenceClock>(clock);
    return !built() || (mediaFilter_ && SUCCEEDED(mediaFilter_->SetSyncSource(clock)));
}

bool com_fg::add(const wchar_t* clsidText, com_filter& filter, const wchar_t* name) {
    com_clsid clsid;
    if (clsid.set(clsidText)) {
        return add(clsid.guid(), filter, name);
    }
    filter.clear();
    return false;
}

bool com_fg::add(const GUID& clsid, com_filter& filter, const wchar_t* name) {
    filter.clear();
    if (built() && filter.create(clsid) && add(filter.filter(), name)) {
        return true;
    }
    filter.clear();
    return false;
}

bool com_fg::add(IBaseFilter* filter, const wchar_t* name) {
    return built() && filter != nullptr && SUCCEEDED(builder_->AddFilter(filter, name));
}

bool com_fg::connect(IBaseFilter* from, const wchar_t* outName, IBaseFilter* to, const wchar_t* inName,
                     const AM_MEDIA_TYPE* type) {
    return connect(findPin(from, outName, PINDIR_OUTPUT).ptr(), findPin(to, inName, PINDIR_INPUT).ptr(),
                   type);
}

bool com_fg::connect(IPin* out, IPin* in, const AM_MEDIA_TYPE* type) {
    if (!built() || out == nullptr || in == nullptr) {
        return false;
    }
    if (SUCCEEDED(builder_->ConnectDirect(out, in, type))) {
        return true;
    }
    return type == nullptr && SUCCEEDED(builder_->Connect(out, in));
}

bool com_fg::renderPin(IBaseFilter* filter, const wchar_t* pinName) {
    return complete(findPin(filter, pinName, PINDIR_OUTPUT).ptr());
}

bool com_fg::renderPin(IBaseFilter* filter, const wchar_t* pinName, IBaseFilter* sink) {
    com_<IPin> out = findPin(filter, pinName, PINDIR_OUTPUT);
    return built() && out && connectToAnyInput(builder_.ptr(), out.ptr(), sink);
}

bool com_fg::remove(IBaseFilter* filter) {
    if (!built() || filter == nullptr) {
        return false;
    }
    disconnectAllPins(builder_.ptr(), filter);
    return SUCCEEDED(builder_->RemoveFilter(filter));
}

bool com_fg::disconnect(IBaseFilter* from, const wchar_t* outName, IBaseFilter* to, const wchar_t* inName) {
    com_<IPin> out = findPin(from, outName, PINDIR_OUTPUT);
    com_<IPin> in = findPin(to, inName, PINDIR_INPUT);
    return built() && out && in && sameObject(peerOf(out.ptr()).ptr(), in.ptr()) &&
           disconnectBothEnds(builder_.ptr(), out.ptr());
}

com_<IUnknown> com_fg::findInterface(const GUID& iid) {
    com_<IUnknown> found;
    for (const com_<IBaseFilter>& filter : filtersOf(builder_.ptr())) {
        void* answer = nullptr;
        if (SUCCEEDED(filter->QueryInterface(iid, &answer)) && answer != nullptr) {
            found.attach(static_cast<IUnknown*>(answer));
            break;
        }
    }
    return found;
}

com_<IBaseFilter> com_fg::findFilter(const wchar_t* name) {
    com_<IBaseFilter> found;
    if (built() && name != nullptr && FAILED(builder_->FindFilterByName(name, found.put()))) {
        static_cast<void>(found.detach());
    }
    return found;
}

bool com_fg::addSource(const wchar_t* source, com_filter& filter, const wchar_t* name) {
    filter.clear();
    if (!built() || source == nullptr) {
        return false;
    }
    constexpr wchar_t devicePrefix[] = L"input";
    constexpr size_t prefixLength = std::size(devicePrefix) - 1;
    if (std::wcsncmp(source, devicePrefix, prefixLength) != 0) {
        com_<IBaseFilter> file;
        return SUCCEEDED(builder_->AddSourceFilter(source, name, file.put())) && filter.ref(file.ptr());
    }
    if (bindDevice(selectDevice(source + prefixLength).ptr(), filter) && add(filter.filter(), name)) {
        return true;
    }
    filter.clear();
    return false;
}

bool com_fg::renderSource(const wchar_t* source, com_filter& filter, const wchar_t* name) {
    return addSource(source, filter, name) && renderSource(filter);
}

bool com_fg::renderSource(com_filter& filter) {
    return complete(sourcePin(filter.filter()).ptr());
}

bool com_fg::renderCaptureSource(com_filter& filter, IBaseFilter* sink) {
    com_<IPin> out = sourcePin(filter.filter());
    return built() && out && connectToAnyInput(builder_.ptr(), out.ptr(), sink);
}

bool com_fg::run(double seconds) {
    REFERENCE_TIME start = 0;
    if (!toUnits(seconds > 0.0 ? seconds * unitsPerSecond : pos(), start)) {
        return false;
    }
    if (mediaFilter_) {
        const HRESULT result = mediaFilter_->Run(start);
        runRequested_ = true;
        if (SUCCEEDED(result)) {
            return true;
        }
    }
    IMediaControl* control = mc();
    return control != nullptr && SUCCEEDED(control->Run());
}

bool com_fg::stop() {
    return stopWithin(stopWait_ms);
}

bool com_fg::reset() {
    const bool stopped = stop();
    seek(0.0);
    return stopped;
}

bool com_fg::pause() {
    if (mediaFilter_ && SUCCEEDED(mediaFilter_->Pause())) {
        return true;
    }
    IMediaControl* control = mc();
    return control != nullptr && SUCCEEDED(control->Pause());
}

bool com_fg::seek(double seconds) {
    LONGLONG current = 0;
    return seeking_ && toUnits(seconds * unitsPerSecond, current) &&
           SUCCEEDED(seeking_->SetPositions(&current, AM_SEEKING_AbsolutePositioning, nullptr,
                                            AM_SEEKING_NoPositioning));
}

double com_fg::len() {
    if (seeking_) {
        LONGLONG duration = 0;
        return SUCCEEDED(seeking_->GetDuration(&duration)) ? static_cast<double>(duration) / unitsPerSecond
                                                           : 0.0;
    }
    REFTIME duration = 0.0;
    return position_ && SUCCEEDED(position_->get_Duration(&duration)) ? duration : 0.0;
}

double com_fg::pos() {
    if (seeking_) {
        LONGLONG current = 0;
        return SUCCEEDED(seeking_->GetCurrentPosition(&current))
                   ? static_cast<double>(current) / unitsPerSecond
                   : 0.0;
    }
    REFTIME current = 0.0;
    return position_ && SUCCEEDED(position_->get_CurrentPosition(&current)) ? current : 0.0;
}

bool com_fg::running() {
    FILTER_STATE state = State_Stopped;
    return mediaFilter_ && SUCCEEDED(mediaFilter_->GetState(0, &state)) && state == State_Running;
}

bool com_fg::finished() {
    return runRequested_ && completed(0);
}

bool com_fg::completed(int timeout_ms) {
    long code = 0;
    return events_ && events_->WaitForCompletion(timeout_ms, &code) == S_OK && code == EC_COMPLETE;
}

long com_fg::getEvent(int timeout_ms) {
    long code = 0;
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    if (!events_ || FAILED(events_->GetEvent(&code, &first, &second, timeout_ms))) {
        return 0;
    }
    events_->FreeEventParams(code, first, second);
    return code;
}

bool com_fg::takeEvent(long& code, long long& parameter) {
    LONG_PTR first = 0;
    LONG_PTR second = 0;
    if (!events_ || FAILED(events_->GetEvent(&code, &first, &second, 0))) {
        return false;
    }
    parameter = first;
    events_->FreeEventParams(code, first, second);
    return true;
}

bool com_fg::registerFG() {
    if (!built()) {
        return false;
    }
    unregisterFG();
    wchar_t name[64] = {};
    std::swprintf(name, std::size(name), L"FilterGraph %08x pid %08x",
                  static_cast<unsigned>(reinterpret_cast<uintptr_t>(builder_.ptr())),
                  static_cast<unsigned>(GetCurrentProcessId()));
    com_<IRunningObjectTable> table;
    com_<IMoniker> moniker;
    DWORD cookie = 0;
    if (FAILED(GetRunningObjectTable(0, table.put())) ||
        FAILED(CreateItemMoniker(L"!", name, moniker.put())) ||
        FAILED(table->Register(ROTFLAGS_REGISTRATIONKEEPSALIVE, builder_.ptr(), moniker.ptr(), &cookie))) {
        return false;
    }
    rotCookie_ = cookie;
    return true;
}

bool com_fg::unregisterFG() {
    com_<IRunningObjectTable> table;
    if (rotCookie_ == 0 || FAILED(GetRunningObjectTable(0, table.put()))) {
        return false;
    }
    return SUCCEEDED(table->Revoke(std::exchange(rotCookie_, 0ul)));
}

bool com_fg::addFriendly(const wchar_t* friendlyName, com_filter& filter) {
    filter.clear();
    if (!built() || friendlyName == nullptr) {
        return false;
    }
    com_<IMoniker> device = CaptureDevices().byName(friendlyName);
    if (bindDevice(device.ptr(), filter) &&
        add(filter.filter(), CaptureDevices::friendlyName(device.ptr()).c_str())) {
        return true;
    }
    filter.clear();
    return false;
}

int com_fg::sourceCount() {
    initialiseCom();
    return static_cast<int>(CaptureDevices().count());
}

IMediaControl* com_fg::mc() {
    if (!mediaControl_) {
        mediaControl_.ref(builder_.ptr());
    }
    return mediaControl_.ptr();
}

bool com_fg::complete(IPin* out) {
    if (!built() || out == nullptr) {
        return false;
    }
    return GraphWalk(builder_.ptr()).connect(out) || SUCCEEDED(builder_->Render(out));
}

bool com_fg::stopWithin(unsigned long timeout_ms) {
    if (!built()) {
        return false;
    }
    runRequested_ = false;
    if (!mediaFilter_ || FAILED(mediaFilter_->Stop())) {
        IMediaControl* control = mc();
        if (control == nullptr || FAILED(control->Stop())) {
            return false;
        }
    }
    return waitStopped(timeout_ms);
}

bool com_fg::waitStopped(unsigned long timeout_ms) {
    FILTER_STATE state = State_Running;
    return mediaFilter_ && mediaFilter_->GetState(timeout_ms, &state) == S_OK && state == State_Stopped;
}

void com_fg::takeApart() {
    unregisterFG();
    for (const com_<IBaseFilter>& filter : filtersOf(builder_.ptr())) {
        disconnectAllPins(builder_.ptr(), filter.ptr());
    }
    std::vector<com_<IBaseFilter>> filters = filtersOf(builder_.ptr());
    for (; !filters.empty(); filters.pop_back()) {
        builder_->RemoveFilter(filters.back().ptr());
    }
    events_.clear();
    position_.clear();
    seeking_.clear();
    mediaControl_.clear();
    mediaFilter_.clear();
    builder_.clear();
}

} // namespace vwin
