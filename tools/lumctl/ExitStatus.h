#pragma once

/// What a script sees of a command. The numbers never change.
enum ExitStatus
{
    STATUS_DONE = 0,
    /// What was asked about is not as it should be.
    STATUS_BAD = 1,
    /// The command line cannot be followed; nothing was done.
    STATUS_USAGE = 2,
    /// A file, the registry or the system did not let it; nothing has changed.
    STATUS_FAILED = 3,
    /// It could be done and should not; nothing has changed.
    STATUS_REFUSED = 4,
    /// It failed on the way and could not be taken back.
    STATUS_HALF_DONE = 5,
    /// Nothing bad was found, and not everything could be seen; nothing has changed.
    STATUS_UNCERTAIN = 6,
};
