// PropertyList: what makePropertyList fills; it holds one reference to each
// property and releases them when it ends.
// ObjectList: the reflected list of objects, the persistent way for an object
// to hold any number of objects of any class. With stable contents somebody
// else owns the elements and a file only fills them in; with non-stable
// contents the list owns them and a file rebuilds it. One owner, one thread.
#pragma once

#include "foundation/list.h"
#include "reflection/objectbase.h"
#include "reflection/property.h"

class PropertyList : public List<PropertyBase> {
public:
    PropertyList() {}
    ~PropertyList();

    // Takes a reference.
    void add(PropertyBase* property);
    // The first property with that name hash and type, else null.
    PropertyBase* find(unsigned int nameHash, unsigned int type) const;
    PropertyBase* find(char const* name, unsigned int type) const;
    using List<PropertyBase>::find;
};

class ObjectList : public ObjectBase {
public:
    typedef LinkIterator<ObjectBase> Iterator;
    typedef ReverseLinkIterator<ObjectBase> ReverseIterator;

    // Large enough for any list a tool makes; a file asking for more is
    // damaged and is read as an empty list.
    static constexpr unsigned int MaxCount = 0x100000;

    ObjectList();
    // Deletes the elements when it owns them.
    ~ObjectList() override;

    // Chosen while empty, before the first element: "List is not empty."
    void setContentStability(bool stable);
    bool getContentStability() const { return mContentStability; }

    // These forward to the list and never delete: clear() neither.
    unsigned int size() const { return mList.size(); }
    bool empty() const { return mList.empty(); }
    void clear() { mList.clear(); }
    ObjectBase* operator[](unsigned int index) const { return mList[index]; }
    Iterator find(ObjectBase const* object) const { return mList.find(object); }
    Iterator remove(ObjectBase* object) { return mList.remove(object); }
    Iterator remove(Iterator position) { return mList.remove(position); }
    ReverseIterator remove(ReverseIterator position) { return mList.remove(position); }
    void addFirst(ObjectBase* object) { mList.addFirst(object); }
    void addLast(ObjectBase* object) { mList.addLast(object); }
    void reserve(unsigned int capacity) { mList.reserve(capacity); }
    void insertFront(Iterator position, ObjectBase* object) { mList.insertFront(position, object); }
    void insertFront(ReverseIterator position, ObjectBase* object) { mList.insertFront(position, object); }
    void insertBackFront(Iterator position, ObjectBase* object) { mList.insertBackFront(position, object); }
    void insertBackFront(ReverseIterator position, ObjectBase* object) { mList.insertBackFront(position, object); }
    unsigned int getIndex(Iterator position) const { return static_cast<unsigned int>(position - mList.begin()); }
    unsigned int getIndex(ReverseIterator position) const
    {
        return size() - 1 - static_cast<unsigned int>(position - mList.rbegin());
    }
    Iterator begin() const { return mList.begin(); }
    Iterator end() const { return mList.end(); }
    ReverseIterator rbegin() const { return mList.rbegin(); }
    ReverseIterator rend() const { return mList.rend(); }

    // The element at the index that the "index" property selects.
    unsigned int getCurrentIndex() const { return mIndex; }
    void setCurrentIndex(unsigned int index) { mIndex = index; }
    // "Index overflow." past the end.
    ObjectBase* getObject() const;
    // An owning list deletes the replaced element, even when the same pointer
    // is stored again.
    void setObject(ObjectBase* object);
    // Not a resize: every element is dropped (deleted when owned), and the
    // list holds count null entries.
    void setCount(unsigned int count);

    // "count", "stable contents", then an "index" and "member" pair per
    // element, all pairs over the one current index.
    void makePropertyList(PropertyList& list) override;
    // The elements follow in every case, even for a list already written.
    void serialize(XmlWriter* writer, bool stable, unsigned int index) override;
    void deserialize(XmlReader* reader) override;

    DECLARE_TYPEINFO(UniqueTypeInfo<ObjectList>)

private:
    void deleteElements();
    void deserializeElements(XmlReader* reader);

    List<ObjectBase> mList;
    u32 mIndex;
    bool mContentStability;
    bool mDeserializing;
};
