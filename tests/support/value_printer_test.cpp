#include "support/value_printer.h"

#include <gtest/gtest.h>
