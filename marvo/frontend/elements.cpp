#include "marvo/frontend/elements.h"

namespace frontend {

void Elements::clear() {
    in_.fill(-1);
    out_.fill(-1);
}

void Elements::set(const vcore::str& marker) {
    const vcore::str number(marker.mid(2, 2));
    const long element = number.toLong();
    if (number.len() < 2 || element < 0 || element >= count) {
        return;
    }
    auto& points = marker.startsWith(L"XI") ? in_ : out_;
    points[static_cast<size_t>(element)] = vcore::str(marker.mid(4)).toLong();
}

void Elements::set(int element, long long in, long long out) {
    in_[static_cast<size_t>(element)] = in;
    out_[static_cast<size_t>(element)] = out;
}

std::pair<long long, long long> Elements::points(int element) const {
    return {in_[static_cast<size_t>(element)], out_[static_cast<size_t>(element)]};
}

std::optional<std::pair<unsigned long long, unsigned long long>> Elements::range(int element) const {
    if (element < 1 || element >= count) {
        return std::nullopt;
    }
    const long long in = in_[static_cast<size_t>(element)];
    const long long out = out_[static_cast<size_t>(element)];
    if (in < 0 || out < 0) {
        return std::nullopt;
    }
    return std::pair(static_cast<unsigned long long>(in), static_cast<unsigned long long>(out));
}

} // namespace frontend
