#include <gtest/gtest.h>

#include "guard/FaultGuard.h"

/// Tests are the host's frames: what its operations throw has to arrive as the host throws it.
int main(int argc, char** argv)
{
    testing::InitGoogleTest(&argc, argv);
    const CHostFrames hostFrames;
    return RUN_ALL_TESTS();
}
