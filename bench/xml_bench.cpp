// The XML object form at the size of a large tool file: a tree of nested
// objects written to about 1 MB of XML, then parsed and read back into new
// objects, which visits every tag and attribute. tinyxml2 parses and walks
// the same file for comparison. Throughput is reported as bytes per second.
#include <benchmark/benchmark.h>

#include "machineload.h"

#include <cstdio>
#include <string>

#include "foundation/allocator.h"
#include "foundation/autostring.h"
#include "reflection/objectlist.h"
#include "serial/stream.h"
#include "serial/xmlreader.h"
#include "serial/xmlwriter.h"

#if HARBOR_BENCH_TINYXML2
#include <tinyxml2.h>
#endif

namespace {

// A node of the tree: a few typical properties and a list of owned children.
class BenchNode : public ObjectBase {
public:
    BenchNode()
        : mId(0), mName("node"), mPosition(), mSize(0, 0), mColor(255, 255, 255, 255), mScale(1.0f), mVisible(true)
    {
        mChildren.setContentStability(false);
    }

    void makePropertyList(PropertyList& list) override
    {
        list.add(new ReferenceProperty<s32>("Id", &mId));
        list.add(new ReferenceProperty<AutoString>("Name", &mName));
        list.add(new ReferenceProperty<sVector>("Position", &mPosition));
        list.add(new ReferenceProperty<sSize>("Size", &mSize));
        list.add(new ReferenceProperty<sColor>("Color", &mColor));
        list.add(new ReferenceProperty<f32>("Scale", &mScale));
        list.add(new ReferenceProperty<bool>("Visible", &mVisible));
        list.add(new ObjectProperty("Children", &mChildren));
    }

    s32 mId;
    AutoString mName;
    sVector mPosition;
    sSize mSize;
    sColor mColor;
    f32 mScale;
    bool mVisible;
    ObjectList mChildren;

    DECLARE_TYPEINFO(UniqueTypeInfo<BenchNode>)
};

IMPLEMENT_OBJECT_TYPEINFO(BenchNode, "ObjectBase");

// Branching 4, depth 5: 1,365 nodes, about 1 MB of XML.
BenchNode* makeTree(int depth, int& counter)
{
    BenchNode* node = new BenchNode();
    node->mId = counter++;
    node->mName.format("node_%d", node->mId);
    node->mPosition = sVector(sFixed(static_cast<float>(node->mId % 640)), sFixed(static_cast<float>(node->mId % 480)));
    node->mSize = sSize(static_cast<unsigned int>(16 + node->mId % 48), 32);
    node->mColor = sColor(static_cast<u8>(node->mId), 128, 64, 255);
    node->mScale = 0.5f + static_cast<float>(node->mId % 7);
    if (depth > 0) {
        for (int i = 0; i < 4; ++i) {
            node->mChildren.addLast(makeTree(depth - 1, counter));
        }
    }
    return node;
}

std::string const& getPath()
{
    static std::string const path = "/tmp/harbor_xml_bench.xml";
    return path;
}

long long writeTree(BenchNode* root)
{
    {
        TextFileStream stream(getPath().c_str(), Stream::eMode_Write);
        XmlWriter writer("BenchNode");
        root->serialize(&writer, true, 0);
        writer.write(&stream);
    }
    TextFileStream stream(getPath().c_str(), Stream::eMode_Read);
    return stream.getLength();
}

struct sFixture {
    sFixture()
    {
        AutoString::setAllocator(new GPAllocator(0x10000000, "String", nullptr, 32, true));
        int counter = 0;
        mpTree = makeTree(5, counter);
        mNodes = counter;
        mBytes = writeTree(mpTree);
    }
    // Before the global heap's leak check at exit.
    ~sFixture()
    {
        delete mpTree;
        remove(getPath().c_str());
    }
    BenchNode* mpTree;
    int mNodes;
    long long mBytes;
};

sFixture& getFixture()
{
    static sFixture fixture;
    return fixture;
}

void BM_XmlWrite(benchmark::State& state)
{
    sFixture& fixture = getFixture();
    for (auto _ : state) {
        benchmark::DoNotOptimize(writeTree(fixture.mpTree));
    }
    state.SetBytesProcessed(state.iterations() * fixture.mBytes);
    state.counters["nodes"] = fixture.mNodes;
    state.counters["file_bytes"] = static_cast<double>(fixture.mBytes);
}
BENCHMARK(BM_XmlWrite)->Unit(benchmark::kMillisecond);

// Parsing alone: the whole file into the tag tree.
void BM_XmlParse(benchmark::State& state)
{
    sFixture& fixture = getFixture();
    for (auto _ : state) {
        TextFileStream stream(getPath().c_str(), Stream::eMode_Read);
        XmlReader reader;
        reader.parse(&stream);
        benchmark::DoNotOptimize(reader.openTag("BenchNode"));
    }
    state.SetBytesProcessed(state.iterations() * fixture.mBytes);
}
BENCHMARK(BM_XmlParse)->Unit(benchmark::kMillisecond);

// Parsing and reading every tag back into a new tree of objects.
void BM_XmlReadObjects(benchmark::State& state)
{
    sFixture& fixture = getFixture();
    for (auto _ : state) {
        TextFileStream stream(getPath().c_str(), Stream::eMode_Read);
        XmlReader reader;
        reader.parse(&stream);
        BenchNode* tree = new BenchNode();
        reader.read(tree, "BenchNode");
        if (tree->mChildren.size() != 4) {
            state.SkipWithError("the tree did not come back");
        }
        delete tree;
    }
    state.SetBytesProcessed(state.iterations() * fixture.mBytes);
}
BENCHMARK(BM_XmlReadObjects)->Unit(benchmark::kMillisecond);

// A root with many empty children (100,000 and 400,000): the time per tag
// must stay flat as the file grows, however the child list grows.
void BM_XmlParseSiblings(benchmark::State& state)
{
    getFixture(); // the string heap
    std::string const path = "/tmp/harbor_xml_bench_siblings.xml";
    long long const count = state.range(0);
    {
        std::string text = "<R>";
        for (long long i = 0; i < count; ++i) {
            text += "<a/>";
        }
        text += "</R>";
        FILE* file = fopen(path.c_str(), "wb");
        fwrite(text.data(), 1, text.size(), file);
        fclose(file);
    }
    for (auto _ : state) {
        TextFileStream stream(path.c_str(), Stream::eMode_Read);
        XmlReader reader;
        reader.parse(&stream);
        benchmark::DoNotOptimize(reader.openTag("R"));
    }
    state.SetItemsProcessed(state.iterations() * count);
    remove(path.c_str());
}
BENCHMARK(BM_XmlParseSiblings)->Arg(100000)->Arg(400000)->Unit(benchmark::kMillisecond);

#if HARBOR_BENCH_TINYXML2
int walk(tinyxml2::XMLElement const* element)
{
    int count = 0;
    for (; element != nullptr; element = element->NextSiblingElement()) {
        ++count;
        for (tinyxml2::XMLAttribute const* attribute = element->FirstAttribute(); attribute != nullptr;
             attribute = attribute->Next()) {
            benchmark::DoNotOptimize(attribute->Value());
        }
        count += walk(element->FirstChildElement());
    }
    return count;
}

// tinyxml2 loading the same file and walking every element and attribute.
void BM_TinyXml2ParseAndWalk(benchmark::State& state)
{
    sFixture& fixture = getFixture();
    for (auto _ : state) {
        tinyxml2::XMLDocument document;
        if (document.LoadFile(getPath().c_str()) != tinyxml2::XML_SUCCESS) {
            state.SkipWithError("tinyxml2 could not load the file");
            break;
        }
        benchmark::DoNotOptimize(walk(document.FirstChildElement()));
    }
    state.SetBytesProcessed(state.iterations() * fixture.mBytes);
}
BENCHMARK(BM_TinyXml2ParseAndWalk)->Unit(benchmark::kMillisecond);
#endif

} // namespace

HARBOR_BENCHMARK_MAIN()
