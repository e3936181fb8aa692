#pragma once

#include "ChainValues.h"

/// Values that are to be written, together.
struct CValueChange
{
    CChainValues before;
    /// All values as they are to be. Those that differ are written.
    CChainValues after;
    /// What was asked for, as in "chain enable".
    std::string command;
};

/// What the values say of a place; nothing when it is not among them.
const CValueData& DataOf(const CChainValues& values, const CValuePlace& place);

/// The places of the values that differ, in their order.
std::vector<CValuePlace> ListDifferences(const CValueChange& change);

/// After a host could not do what it was asked to do. Throws CCommandError when it has changed something all
/// the same.
void RequireUnchangedByHost(const CValueChange& found);

/// Prints a line for each place, with what is there and what is to be there.
void PrintWrites(const CValueChange& change, const std::vector<CValuePlace>& places, std::string& output);

/// Writes the places in their order and reads them back. If that fails, restores what was there before, in
/// the order of back, which has the same places, and throws CCommandError.
void WriteChange(const CValueChange& change, const std::vector<CValuePlace>& places,
                 const std::vector<CValuePlace>& back);
