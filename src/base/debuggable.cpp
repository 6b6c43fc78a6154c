#include "base/debuggable.h"

namespace Dovan {

Debuggable::~Debuggable()
{
    if (owned) {
        delete handler;
    }
    handler = nullptr;
}

}  // namespace Dovan
