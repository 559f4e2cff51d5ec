#include "resource/resourcebase.h"

#include "foundation/debug.h"
#include "reflection/control.h"
#include "reflection/property.h"
#include "resource/resourcesystem.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

IMPLEMENT_TYPEINFO(ResourceBase, "ObjectBase", TypeInfo::eAttribute_Abstract);

ClassHeap ResourceBase::mHeap;

ResourceBase::ResourceBase() : mAttribute(0), mFlags(0), mHash(0)
{
}

ResourceBase::ResourceBase(u16 attribute) : mAttribute(attribute), mFlags(0), mHash(0)
{
}

// The map's entry goes here rather than in the destructor: under the system
// lock a look-up on the load thread may still take the resource back.
void ResourceBase::end()
{
    ResourceSystem* system = ResourceSystem::getInstance();
    if (system != nullptr && !mPath.empty() && !system->removeEndingResource(this)) {
        return;
    }
    delete this;
}

bool ResourceBase::load(Stream&)
{
    return false;
}

bool ResourceBase::save(Stream&)
{
    return false;
}

bool ResourceBase::convert(Stream&)
{
    return false;
}

char const* ResourceBase::getExtension() const
{
    return nullptr;
}

TypeInfo const* ResourceBase::getIntermediateType() const
{
    return nullptr;
}

TypeInfo const* ResourceBase::getExtraIntermediateType(unsigned int) const
{
    return nullptr;
}

TypeInfo const* ResourceBase::getNativeType() const
{
    return nullptr;
}

char const* ResourceBase::getFilter() const
{
    return nullptr;
}

void ResourceBase::setPath(AutoString const& path)
{
    if (!mPath.empty()) {
        dev_assert("Path is already set.", __FILE__, __LINE__);
    }
    mPath = path;
    mHash = mPath.hash();
}

void ResourceBase::makeUIList(List<UIBase>& list)
{
    if (UIBase* widget = makeParameterControlUI(new ReferenceProperty<AutoString>("Path", &mPath))) {
        list.addLast(widget);
    }
}

void ResourceBase::takePathFrom(Stream const& stream)
{
    if (mPath.empty() && stream.getPath() != nullptr) {
        setPath(AutoString(stream.getPath()));
    }
}

void ResourceBase::readXml(Stream& stream)
{
    {
        XmlReader reader;
        reader.parse(&stream);
        reader.read(this, getTypeInfo()->getName());
    }
    takePathFrom(stream);
}

bool ResourceBase::writeXml(Stream& stream)
{
    if (stream.getTextAccessor() == nullptr) {
        return false;
    }
    XmlWriter writer(getTypeInfo()->getName());
    serialize(&writer, true, 0);
    writer.write(&stream);
    return true;
}
