#include "bench/avi_copy.h"

#include "bench/stopwatch.h"
#include "marvo.h"

#include <stdexcept>

double copyStream_s(const wchar_t* stream, const wchar_t* avi) {
    dvExport work;
    work.withSound(false);
    const Stopwatch watch;
    if (!work.run(stream, 0, dvExport::toTheEnd, avi, {})) {
        throw std::runtime_error("the stream cannot be copied");
    }
    return watch.seconds();
}
