#pragma once

#include <IOKit/CurrentRegistry.h>
#include <IOKit/References.h>

#include <gtest/gtest.h>

/// For tests that put a registry of their own into the place of the host's. At the end of each no reference may be left.
class RegistryTest : public testing::Test {
protected:
    ~RegistryTest() override
    {
        EXPECT_EQ(iokit::References::shared().total(), 0U) << "references to registry entries are left";
        use(iokit::Registry());
    }

    static void use(iokit::Registry registry)
    {
        iokit::UseSource(std::make_unique<iokit::FixedSource>(std::move(registry)));
    }
};
