// Runs a program's tests in namespaces of their own.

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/own_namespaces.h"

int main(int argc, char** argv)
{
    QuaskTesting::enterOwnNamespaces();
    testing::InitGoogleMock(&argc, argv);
    return RUN_ALL_TESTS();
}
