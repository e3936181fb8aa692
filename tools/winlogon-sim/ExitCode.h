#pragma once

/// How winlogon-sim ends. The last two are for the process of one start of the machine, in which a plugin can
/// end the process with any status: they say that it lived as long as the day wants.
enum ExitCode
{
    EXIT_AS_GIVEN = 0,
    EXIT_DIFFERENT = 1,
    EXIT_USAGE = 2,
    EXIT_SETUP = 3,
    EXIT_ENDED = 4, ///< a call did not come back, as the day expects
    EXIT_LIVED = 5, ///< all steps were as they should be
};
