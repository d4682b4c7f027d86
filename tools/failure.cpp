#include "tools/failure.h"

#include "tools/text.h"

namespace dvrec {

std::string systemMessage(unsigned long error) {
    return utf8(vcore::systemMessage(error));
}

} // namespace dvrec
