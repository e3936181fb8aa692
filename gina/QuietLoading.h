#pragma once

/// While an object of this class exists, Windows shows no message box when a DLL cannot be loaded: while the
/// machine starts nobody is there to answer it. The error mode belongs to the whole process; it is restored
/// when the last object is gone. Any thread.
class CQuietLoading
{
public:
    CQuietLoading() noexcept;
    ~CQuietLoading();
    CQuietLoading(const CQuietLoading&) = delete;
    CQuietLoading& operator=(const CQuietLoading&) = delete;
};
