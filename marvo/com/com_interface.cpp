#include "marvo/com/com_interface.h"

namespace vwin {

com_interface::~com_interface() = default;

} // namespace vwin
