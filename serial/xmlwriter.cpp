#include "serial/xmlwriter.h"

#include "foundation/debug.h"
#include "serial/stream.h"

XmlWriter::sTag::~sTag()
{
    for (u32 i = 0; i < mAttributes.size(); ++i) {
        delete mAttributes[i];
    }
    for (u32 i = 0; i < mTags.size(); ++i) {
        delete mTags[i];
    }
}

XmlWriter::XmlWriter(char const* rootName) : mpCurrentTag(nullptr), mTabCount(0)
{
    openTag(rootName);
}

XmlWriter::~XmlWriter()
{
    if (!mStack.empty()) {
        dev_assert("Unclosed tag found.", __FILE__, __LINE__);
    }
    if (mpCurrentTag != nullptr) {
        closeTag();
    }
    for (u32 i = 0; i < mTags.size(); ++i) {
        delete mTags[i];
    }
}

void XmlWriter::openTag(AutoString const& name)
{
    sTag* tag = new sTag(name);
    if (mpCurrentTag != nullptr) {
        mpCurrentTag->mTags.addLast(tag);
        mStack.push(mpCurrentTag);
    } else {
        mTags.addLast(tag);
    }
    mpCurrentTag = tag;
}

void XmlWriter::openTag(char const* name)
{
    openTag(AutoString(name));
}

void XmlWriter::closeTag()
{
    if (mpCurrentTag == nullptr) {
        dev_assert("Unclosed tag not found.", __FILE__, __LINE__);
    }
    mpCurrentTag = mStack.empty() ? nullptr : mStack.pop();
}

void XmlWriter::addAttribute(AutoString const& name, AutoString const& value)
{
    if (mpCurrentTag == nullptr) {
        dev_assert("No tag is opened.", __FILE__, __LINE__);
    }
    sAttribute* attribute = new sAttribute;
    attribute->mName = name;
    attribute->mValue = value;
    mpCurrentTag->mAttributes.addLast(attribute);
}

void XmlWriter::write(Stream* stream)
{
    TextStreamAccessor* accessor = stream->getTextAccessor();
    if (accessor == nullptr) {
        dev_assert("Stream don't have text accessor.", __FILE__, __LINE__);
    }
    if (!mStack.empty()) {
        dev_assert("Unclosed tag found.", __FILE__, __LINE__);
    }
    if (mpCurrentTag == nullptr) {
        dev_assert("Root has already closed.", __FILE__, __LINE__);
    }
    closeTag();
    mTabCount = 0;
    accessor->write("<?xml version=\"1.0\"?>", 0);
    accessor->putCR();
    accessor->putCR();
    for (u32 i = 0; i < mTags.size(); ++i) {
        writeTag(accessor, mTags[i]);
    }
}

// "<name " always carries the blank, even without attributes; each attribute
// is followed by one blank, so a leaf ends in " />" and a parent in " >".
void XmlWriter::writeTag(TextStreamAccessor* accessor, sTag const* tag)
{
    accessor->putTab(mTabCount);
    accessor->putChar('<');
    if (!tag->mName.empty()) {
        accessor->write(tag->mName.c_str(), 0);
    }
    accessor->putChar(' ');
    for (u32 i = 0; i < tag->mAttributes.size(); ++i) {
        sAttribute const* attribute = tag->mAttributes[i];
        if (!attribute->mName.empty()) {
            accessor->write(attribute->mName.c_str(), 0);
        }
        accessor->write("=\"", 2);
        if (!attribute->mValue.empty()) {
            accessor->write(attribute->mValue.c_str(), 0);
        }
        accessor->write("\" ", 2);
    }
    if (tag->mTags.empty()) {
        accessor->write("/>", 2);
        accessor->putCR();
        return;
    }
    accessor->putChar('>');
    accessor->putCR();
    ++mTabCount;
    for (u32 i = 0; i < tag->mTags.size(); ++i) {
        writeTag(accessor, tag->mTags[i]);
    }
    --mTabCount;
    accessor->putTab(mTabCount);
    accessor->write("</", 2);
    if (!tag->mName.empty()) {
        accessor->write(tag->mName.c_str(), 0);
    }
    accessor->putChar('>');
    accessor->putCR();
}
