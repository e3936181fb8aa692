#pragma once

/// While one exists, the system shows no message box when a DLL cannot be loaded: while the machine starts
/// nobody is there to answer it. The mode belongs to the process; it is what it was again when the last
/// object is gone. Any thread.
class CQuietLoading
{
public:
    CQuietLoading() noexcept;
    ~CQuietLoading();
    CQuietLoading(const CQuietLoading&) = delete;
    CQuietLoading& operator=(const CQuietLoading&) = delete;
};
