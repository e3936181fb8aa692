#pragma once

/// What a script sees of a command. The numbers never change.
enum ExitStatus
{
    /// Also of a change, when all is as it was to become already.
    STATUS_DONE = 0,
    /// The answer is no, or something is not as it should be.
    STATUS_BAD = 1,
    /// The command line cannot be followed; nothing was done.
    STATUS_USAGE = 2,
    /// A file, the registry or the system prevented it; nothing has changed.
    STATUS_FAILED = 3,
    /// Refused: it could be done, but should not be; nothing has changed.
    STATUS_REFUSED = 4,
    /// It failed halfway, and what was written could not be taken back.
    STATUS_HALF_DONE = 5,
    /// Nothing bad was found, and not everything could be seen; nothing has changed. Of a host that did not
    /// answer: whether it does what it was asked to do.
    STATUS_UNCERTAIN = 6,
};
