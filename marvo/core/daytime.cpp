#include "marvo/core/daytime.h"

#include "marvo/core/str.h"

#include <climits>
#include <cstring>

namespace vcore {

namespace {

constexpr unsigned long long unitsPerMillisecond = 10'000;

FILETIME toFileTime(unsigned long long count) {
    return {static_cast<DWORD>(count), static_cast<DWORD>(count >> 32)};
}

unsigned long long toCount(const FILETIME& time) {
    return static_cast<unsigned long long>(time.dwHighDateTime) << 32 | time.dwLowDateTime;
}

/// Converts fields to a count, and back to check: some systems carry a field that is too large (31 April)
/// over into the next one instead of refusing it.
bool fieldsToCount(const SYSTEMTIME& fields, FILETIME& count) {
    SYSTEMTIME back;
    if (!SystemTimeToFileTime(&fields, &count) || !FileTimeToSystemTime(&count, &back)) {
        return false;
    }
    back.wDayOfWeek = fields.wDayOfWeek;
    return std::memcmp(&back, &fields, sizeof back) == 0;
}

/// Reads numbers between separators into the given fields, in order, until the text or the fields end. False
/// for a number that no field can hold.
bool readNumbers(const str& text, const wchar_t* separators, WORD* const* fields, int count) {
    str rest(text);
    for (int i = 0; i < count; ++i) {
        const long number = rest.toLong();
        if (number < 0 || number > USHRT_MAX) {
            return false;
        }
        *fields[i] = static_cast<WORD>(number);
        const int separator = rest.findChar(separators);
        if (separator < 0) {
            break;
        }
        rest.remove(0, static_cast<unsigned long>(separator) + 1);
    }
    return true;
}

} // namespace

daytime::daytime() {
    GetLocalTime(&fields_);
    SystemTimeToFileTime(&fields_, &count_);
}

daytime::daytime(unsigned long long count, bool update) : count_(toFileTime(count)) {
    if (update) {
        this->update();
    }
}

daytime::daytime(unsigned short day, unsigned short month, unsigned short year) : daytime() {
    if (day >= 1 && day <= 31) {
        fields_.wDay = day;
    }
    if (month >= 1 && month <= 12) {
        fields_.wMonth = month;
    }
    const WORD thisYear = fields_.wYear;
    if (year != 0) {
        fields_.wYear = year;
    }
    fields_.wHour = fields_.wMinute = fields_.wSecond = fields_.wMilliseconds = fields_.wDayOfWeek = 0;
    if (!updateFileTime()) {
        fields_.wYear = thisYear;
        updateFileTime();
    }
}

daytime::daytime(const wchar_t* text) {
    str copy;
    fromStr(copy = text, false, false);
}

unsigned long long daytime::count() const {
    return toCount(count_);
}

void daytime::setCount(unsigned long long count) {
    count_ = toFileTime(count);
}

bool daytime::update() {
    SYSTEMTIME fields;
    if (!FileTimeToSystemTime(&count_, &fields)) {
        return false;
    }
    fields_ = fields;
    return true;
}

bool daytime::updateFileTime() {
    SYSTEMTIME fields = fields_;
    fields.wDay = fields.wDay < 1 ? 1 : fields.wDay > 31 ? 31 : fields.wDay;
    fields.wMonth = fields.wMonth < 1 ? 1 : fields.wMonth > 12 ? 12 : fields.wMonth;
    FILETIME count;
    while (!fieldsToCount(fields, count)) {
        if (fields.wDay <= 28) {
            return false;
        }
        --fields.wDay;
    }
    count_ = count;
    return update();
}

bool daytime::toLocal() {
    daytime local(0, false);
    return FileTimeToLocalFileTime(&count_, &local.count_) && local.update() && (*this = local, true);
}

bool daytime::toUTC() {
    daytime utc(0, false);
    return LocalFileTimeToFileTime(&count_, &utc.count_) && utc.update() && (*this = utc, true);
}

daytime& daytime::getUTC() {
    GetSystemTime(&fields_);
    SystemTimeToFileTime(&fields_, &count_);
    return *this;
}

bool daytime::setSystemTime() const {
    return SetSystemTime(&fields_) != FALSE;
}

bool daytime::setLocal(unsigned int tickAtReading) const {
    unsigned long long now = count();
    if (tickAtReading != 0) {
        now += static_cast<unsigned long long>(GetTickCount() - static_cast<DWORD>(tickAtReading)) *
               unitsPerMillisecond;
    }
    const FILETIME time = toFileTime(now);
    SYSTEMTIME fields;
    return FileTimeToSystemTime(&time, &fields) && SetLocalTime(&fields);
}

str& daytime::toStr(str& out) const {
    out.allocBuffer(128);
    return out.sprintf(L"%02d.%02d.%d %02d:%02d:%02d", fields_.wDay, fields_.wMonth, fields_.wYear,
                       fields_.wHour, fields_.wMinute, fields_.wSecond);
}

str& daytime::timeToStr(str& out) const {
    out.allocBuffer(32);
    return out.sprintf(L"%02d:%02d:%02d", fields_.wHour, fields_.wMinute, fields_.wSecond);
}

str& daytime::toStrShort(str& out) const {
    out.allocBuffer(16);
    return out.sprintf(L"%04d%02d%02d_%02d%02d%02d", fields_.wYear, fields_.wMonth, fields_.wDay,
                       fields_.wHour, fields_.wMinute, fields_.wSecond);
}

bool daytime::fromStr(const str& text, bool yearFirst, bool iso) {
    *this = daytime();
    if (text.len() == 0) {
        return true;
    }
    daytime told(*this);
    SYSTEMTIME& f = told.fields_;
    WORD* fields[] = {&f.wDay, &f.wMonth, &f.wYear, &f.wHour, &f.wMinute, &f.wSecond, &f.wMilliseconds};
    if (yearFirst || iso) {
        fields[0] = &f.wYear;
    }
    if (yearFirst) {
        fields[2] = &f.wDay;
    }
    return readNumbers(text, iso ? L"TZ:.,;- " : L":.,;- ", fields, 7) && told.updateFileTime() &&
           (*this = told, true);
}

bool daytime::timeFromStr(const str& text) {
    *this = daytime();
    if (text.len() == 0) {
        return true;
    }
    daytime told(*this);
    SYSTEMTIME& f = told.fields_;
    f.wHour = f.wMinute = f.wSecond = f.wMilliseconds = 0;
    WORD* const fields[] = {&f.wHour, &f.wMinute, &f.wSecond};
    return readNumbers(text, L":.,;- ", fields, 3) && told.updateFileTime() && (*this = told, true);
}

long long daytime::timestamp() const {
    SYSTEMTIME epoch{};
    epoch.wYear = 1970;
    epoch.wMonth = 1;
    epoch.wDay = 1;
    FILETIME start{};
    SystemTimeToFileTime(&epoch, &start);
    return static_cast<long long>(toCount(start) - count()) / static_cast<long long>(unitsPerSecond);
}

int daytime::diff_days(unsigned long long a, unsigned long long b) {
    return static_cast<int>(static_cast<long long>(b - a) / static_cast<long long>(unitsPerDay));
}

double daytime::diff_secs(unsigned long long a, unsigned long long b) {
    return static_cast<double>(static_cast<long long>(b - a)) / static_cast<double>(unitsPerSecond);
}

} // namespace vcore
