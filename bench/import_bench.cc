// How fast listings are imported and given up, and what passing their bytes by costs in itself.

#include <benchmark/benchmark.h>
#include <expat.h>

#include <cstdint>
#include <memory>
#include <vector>

#include "bench/sample_listings.h"
#include "host/mstrm.h"
#include "host/mxml.h"
#include "import/record_readers.h"
#include "schedule/provider_data.h"
#include "xml/safe_node.h"
#include "xml/simple_xml_reader.h"

namespace bench {

namespace {

using ORVANE::MBUFFER;
using ORVANE::MSTR;
using ORVANE::MSTRM;
using ORVANE::MXML;

Format FormatOf(const benchmark::State& state) { return kFormats[state.range(0)]; }

void SetRates(benchmark::State& state, Format format) {
  state.SetLabel(NameOf(format));
  state.SetBytesProcessed(state.iterations() * BytesOf(FileOf(format)));
  state.SetItemsProcessed(state.iterations() * ItemCount());
}

// The floors: a block a call, and one byte a call through the virtual table.
void FloorReadBlocks(benchmark::State& state) {
  std::vector<char> block(64 * 1024);
  MSTRM stream;
  stream.Open(MSTR(FileOf(Format::kXMLTV).c_str()), true, false, true);
  for (auto _ : state) {
    stream.Seek(0, MBUFFER::SEEK::Start);
    while (stream.Read(block.data(), static_cast<int>(block.size())) > 0) {
      benchmark::DoNotOptimize(block.data());
    }
  }
  SetRates(state, Format::kXMLTV);
}
BENCHMARK(FloorReadBlocks)->Unit(benchmark::kMillisecond);

void FloorVirtualByte(benchmark::State& state) {
  MSTRM stream;
  stream.Open(MSTR(FileOf(Format::kXMLTV).c_str()), true, false, true);
  MBUFFER* hidden = &stream;
  benchmark::DoNotOptimize(hidden);  // or the call would be resolved
  for (auto _ : state) {
    hidden->Seek(0, MBUFFER::SEEK::Start);
    unsigned sum = 0;
    for (unsigned char c = 0; hidden->Read(&c, 1) == 1;) sum += c;
    benchmark::DoNotOptimize(sum);
  }
  SetRates(state, Format::kXMLTV);
}
BENCHMARK(FloorVirtualByte)->Unit(benchmark::kMillisecond);

// The reader alone: every record with all below it, as the importers of XMLTV get it.
void ReadElements(benchmark::State& state) {
  CSimpleXMLReader reader;
  reader.Open(MSTR(FileOf(Format::kXMLTV).c_str()), true, false, true);
  for (auto _ : state) {
    CSafeNode root;
    MSTR error;
    bool open = false;
    bool end_tag = false;
    reader.ReadRoot(root);
    while (reader.ReadRecord(open, end_tag) && !end_tag) {
      if (open) reader.ReadRecordChildren(error);
    }
  }
  SetRates(state, Format::kXMLTV);
}
BENCHMARK(ReadElements)->Unit(benchmark::kMillisecond);

// The same bytes through expat, whose handlers do nothing.
void ParseWithExpat(benchmark::State& state) {
  std::vector<char> block(128 * 1024);
  for (auto _ : state) {
    const std::unique_ptr<XML_ParserStruct, void (*)(XML_Parser)> parser(XML_ParserCreate(nullptr),
                                                                         XML_ParserFree);
    XML_SetElementHandler(
        parser.get(), [](void*, const XML_Char*, const XML_Char**) {},
        [](void*, const XML_Char*) {});
    XML_SetCharacterDataHandler(parser.get(), [](void*, const XML_Char*, int) {});
    MSTRM stream;
    stream.Open(MSTR(FileOf(Format::kXMLTV).c_str()), true, false, true);
    for (int count = -1; count != 0;) {
      count = stream.Read(block.data(), static_cast<int>(block.size()));
      XML_Parse(parser.get(), block.data(), count, count == 0 ? 1 : 0);
    }
  }
  SetRates(state, Format::kXMLTV);
}
BENCHMARK(ParseWithExpat)->Unit(benchmark::kMillisecond);

void LoadDocument(benchmark::State& state) {
  MXML document;
  for (auto _ : state) document.Load(MSTR(FileOf(Format::kTitanTV).c_str()));
  SetRates(state, Format::kTitanTV);
}
BENCHMARK(LoadDocument)->Unit(benchmark::kMillisecond);

void ImportListings(benchmark::State& state) {
  const Format format = FormatOf(state);
  for (auto _ : state) {
    auto store = Import(FileOf(format));
    state.PauseTiming();
    store.reset();
    state.ResumeTiming();
  }
  SetRates(state, format);
}
BENCHMARK(ImportListings)->DenseRange(0, 3)->Unit(benchmark::kMillisecond);

void FreeSchedule(benchmark::State& state) {
  for (auto _ : state) {
    state.PauseTiming();
    auto store = Import(ListingsFile());
    state.ResumeTiming();
    store.reset();
  }
}
BENCHMARK(FreeSchedule)->Unit(benchmark::kMillisecond)->Iterations(10);

// A record's fields from an element of as many children.
template <typename Read>
void ReadRecord(benchmark::State& state, const std::vector<const char*>& names, Read read) {
  CProviderData store;
  CSafeNode node;
  for (const char* const name : names) {
    auto child = std::make_unique<CSafeNode>();
    child->name = name;
    child->value = "216180000";
    node.AddNode(child.release());
  }
  for (auto _ : state) read(node, store);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(names.size()));
}

void ReadItemNumbered(benchmark::State& state) {
  ReadRecord(state, {"f1", "f2", "f3", "f4", "f10", "f12"},
             [&](const MXML::NODE& node, CProviderData& store) {
               auto item = store.NewItem();
               ReadScheduleItemFields(node, ProviderKind::kOther, 0, item);
             });
}
BENCHMARK(ReadItemNumbered);

void ReadItemNamed(benchmark::State& state) {
  ReadRecord(state, {"station_id", "program_id", "start_time", "end_time", "hd", "repeat"},
             [&](const MXML::NODE& node, CProviderData& store) {
               auto item = store.NewItem();
               ReadScheduleItemFields(node, ProviderKind::kTitanTV, 0, item);
             });
}
BENCHMARK(ReadItemNamed);

void ReadProgramNumbered(benchmark::State& state) {
  ReadRecord(state, {"f1", "f2", "f3", "f4", "f5", "f8"},
             [&](const MXML::NODE& node, CProviderData& store) {
               auto program = store.NewProgram();
               ReadProgramFields(node, ProviderKind::kOther, program);
             });
}
BENCHMARK(ReadProgramNumbered);

}  // namespace

}  // namespace bench
