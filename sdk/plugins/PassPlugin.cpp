// The smallest plugin: it takes part and passes every call on.

#include "LUMPlugin.h"

namespace {

class CPassPlugin final : public lum::CPlugin
{
public:
    CPassPlugin() : CPlugin(TEXT("Passes every call on")) {}
};

CPassPlugin s_plugin;

} // namespace

LUM_PLUGIN(s_plugin)
