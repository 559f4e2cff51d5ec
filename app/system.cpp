#include "app/system.h"

#include "foundation/debug.h"

IMPLEMENT_TYPEINFO(System, "ObjectBase", TypeInfo::eAttribute_Abstract);
ClassHeap System::mHeap;

System::System() : mPreprocessEnable(true), mUpdateEnable(true), mPostprocessEnable(true)
{
}

System::~System()
{
}

void System::setProcessEnable(bool preprocess, bool update, bool postprocess)
{
    mPreprocessEnable = preprocess;
    mUpdateEnable = update;
    mPostprocessEnable = postprocess;
}

void System::clearDependency()
{
    mPreprocessDependency.clear();
    mUpdateDependency.clear();
    mPostprocessDependency.clear();
    mDestroyDependency.clear();
}
