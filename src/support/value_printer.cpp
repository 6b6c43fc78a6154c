#include "support/value_printer.h"

#include "base/hex.h"
