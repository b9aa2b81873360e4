// Descriptor-API call sequences as a careless command handler makes them:
// create any registered table, fill any cell with any typed operation, link
// and nest, change print flags and names, sort, print in every output type
// and locale into streams of any size, run the metadata command, fail
// allocations, and free. Misuse the API cannot detect (a descriptor in two
// places, a chain linked into itself, a text given to the generic fill of a
// nested-table column) is not generated. After every input every block must
// be back.
//
// Input: a sequence of operations, each an opcode byte and its operands
// taken from the bytes that follow.
#include "fuzz_input.h"

#include <qel/platform/testing.h>
#include <qel/qel.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>
#include <vector>

namespace {


const services::user::Preferences::OutputType kTypes[] = {
    services::user::Preferences::OUTPUT_CONSOLE, services::user::Preferences::OUTPUT_API,
    services::user::Preferences::OUTPUT_API_BRIEF, services::user::Preferences::OUTPUT_XML2,
    services::user::Preferences::OUTPUT_XML2_BRIEF, services::user::Preferences::OUTPUT_JSON,
    services::user::Preferences::OUTPUT_JSON_ALT, services::user::Preferences::OUTPUT_TAG,
    static_cast<services::user::Preferences::OutputType>(tGSvolumes)}; // not an output type

// The registered tables, in slot order.
std::vector<GS_TokenValues> &tables() {
  static std::vector<GS_TokenValues> all;
  return all;
}

// Descriptors the fuzzer owns: heads of chains nobody else holds.
constexpr std::size_t kSlots = 8;

[[noreturn]] void fail(const char *what) { fuzzFail("descriptor_fuzzer", what); }

int column(FuzzInput &in) { return static_cast<int>(in.byte() % 48) - 2; }
int row(FuzzInput &in) { return static_cast<int>(in.byte() % 72) - 2; }

// One typed or generic fill of cell (c, r) of \p d. A nested descriptor
// given to a fill is taken over when the cell holds it afterwards;
// otherwise it is freed here.
void fill(services::user::Session *s, QEL_DESC *d, FuzzInput &in, std::vector<QEL_DESC *> &owned) {
  const std::uint8_t op = in.byte() % 23;
  const int c = column(in), r = row(in);
  const std::uint32_t n = in.word();
  // Fixed-size fills read the property's size in bytes: the text sits at
  // the start of a zeroed block longer than any registered size.
  static char block[1024];
  const std::string t = in.text(300, false);
  std::memset(block, 0, sizeof block);
  std::memcpy(block, t.data(), t.size());
  const char *text = in.byte() % 8 ? block : nullptr;
  const auto *bytes = reinterpret_cast<const std::uint8_t *>(text);
  switch (op) {
  case 0: QEL_FillColumnHex8(s, d, c, r, static_cast<std::uint8_t>(n)); break;
  case 1: QEL_FillColumnHex32(s, d, c, r, n); break;
  case 2: QEL_FillColumnU8(s, d, c, r, static_cast<std::uint8_t>(n)); break;
  case 3: QEL_FillColumnU32(s, d, c, r, n); break;
  case 4: QEL_FillColumnString(s, d, c, r, text); break;
  case 5: QEL_FillColumnDouble(s, d, c, r, static_cast<double>(static_cast<std::int32_t>(n)) / 7); break;
  case 6: QEL_FillColumnEnum(s, d, c, r, n % 16); break;
  case 7: QEL_FillColumnEnumToken(s, d, c, r, n % 8000); break;
  case 8: QEL_FillColumnIndex(s, d, c, r, n); break;
  case 9: QEL_FillColumnU64(s, d, c, r, text); break;
  case 10: QEL_FillColumnI32(s, d, c, r, static_cast<std::int32_t>(n)); break;
  case 11: QEL_FillColumnHexString(s, d, c, r, bytes); break;
  case 12: QEL_FillColumnU16(s, d, c, r, static_cast<std::uint16_t>(n)); break;
  case 13: QEL_FillColumnStringN(s, d, c, r, text); break;
  case 14: QEL_FillColumnBlocks(s, d, c, r, text); break;
  case 15: QEL_FillColumnBlocks2Bytes(s, d, c, r, text); break;
  case 16: QEL_FillColumnDateTime(s, d, c, r, n); break;
  case 17: QEL_FillColumnTime(s, d, c, r, n); break;
  case 18: QEL_FillColumn(s, d, c, r, n); break;
  case 19: QEL_FillColumn(s, d, c, r, static_cast<int>(n)); break;
  case 20: // generic pointer: a text, except for a nested-table column
  case 21: // typed nested table
  case 22: {
    const bool nestedColumn = getColumnType(d->tableId, c) == COLTYPE_QEL;
    if (op == 20 && !nestedColumn) {
      QEL_FillColumn(s, d, c, r, static_cast<const void *>(text));
      break;
    }
    // A descriptor the fuzzer owns (not \p d itself), or none.
    QEL_DESC *nested = nullptr;
    const std::size_t pick = in.byte() % (owned.size() + 1);
    if (pick < owned.size() && owned[pick] != d) {
      nested = owned[pick];
      owned.erase(owned.begin() + static_cast<long>(pick));
    }
    if (op == 20)
      QEL_FillColumn(s, d, c, r, static_cast<const void *>(nested));
    else
      QEL_FillColumnQEL(s, d, c, r, nested);
    const bool taken = c >= 0 && r >= 0 && c < d->maxColumns && r < d->maxRows &&
                       d->cells[static_cast<long>(r) * d->maxColumns + c] ==
                           reinterpret_cast<QEL_CELL>(nested);
    if (nested && !taken)
      QEL_Free(nested);
    break;
  }
  }
}

void print(QEL_DESC *d, FuzzInput &in) {
  const std::uint8_t how = in.byte();
  // Small streams cut the document anywhere; the large one holds it.
  static const int kSizes[] = {0, 1, 7, 64, 300, 4096, 1 << 20};
  utility::BufferStream out(kSizes[in.byte() % 7]);
  services::user::Session s(out);
  services::user::Preferences &p = s.getPreferences();
  p.setOutputFormat(kTypes[how % 9]);
  p.setLocale(static_cast<LocaleCode>(LOCALE_EN + in.byte() % 10));
  p.setStorageSizeUnits(static_cast<services::user::Preferences::StorageUnit>(
      services::user::Preferences::UNITS_AUTO + in.byte() % 5));
  p.setStorageSizeBase(in.byte() % 2 ? 2 : 10);
  p.setStorageSizePrecision(in.byte() % 12);
  s.getContext().setScreenWidth(static_cast<int>(in.byte()) * 2);
  const std::string request = in.text(300, false);
  QEL_Print_Data(d, &s, out, how & 16, how & 32, how & 64 ? request.c_str() : nullptr);
}

void meta(FuzzInput &in) {
  utility::BufferStream out(1 << 20);
  services::user::Session s(out);
  s.getPreferences().setOutputFormat(kTypes[in.byte() % 9]);
  s.getPreferences().setLocale(static_cast<LocaleCode>(LOCALE_EN + in.byte() % 10));
  std::string which = in.text(300, false);
  if (in.byte() % 2 && !tables().empty())
    which = strings::GS.toString(tables()[in.byte() % tables().size()]);
  cli_metaHandler(&s, which.c_str());
}

void silenceLog(const framework::LogRecord &, void *) {}

} // namespace

extern "C" int LLVMFuzzerInitialize(int *, char ***) {
  framework::Logger::setSink(silenceLog);
  QEL_Start();
  TableMetaDataManager *registry = TableMetaDataManager::getTableMetaDataManager(LOCALE_EN);
  for (int i = 0; i < TableMetaDataManager::kSlots; ++i)
    if (TableMetaData *t = registry->getSlot(i))
      tables().push_back(t->getTableId());
  return 0;
}

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  FuzzInput in{data, size};
  std::vector<QEL_DESC *> owned;
  utility::BufferStream sessionOut(4096);
  services::user::Session session(sessionOut);
  const long baseline = framework::Memory::liveAllocations();
  while (!in.empty()) {
    const std::uint8_t op = in.byte();
    QEL_DESC *d = owned.empty() ? nullptr : owned[in.byte() % owned.size()];
    switch (op % 11) {
    case 0: {
      const GS_TokenValues table = in.byte() % 16 ? tables()[in.byte() % tables().size()]
                                                  : static_cast<GS_TokenValues>(in.word() % 8000);
      const int rows = in.byte() % 16 ? in.byte() % 64 : static_cast<int>(in.word() % 20000) - 10000;
      session.getPreferences().setLocale(static_cast<LocaleCode>(LOCALE_EN + in.byte() % 10));
      QEL_DESC *created = QEL_Create(&session, table, static_cast<GS_TokenValues>(in.word() % 8000),
                                     rows, in.byte() % 7);
      if (created && owned.size() < kSlots)
        owned.push_back(created);
      else
        QEL_Free(created);
      break;
    }
    case 1:
    case 2:
      if (d)
        fill(&session, d, in, owned);
      break;
    case 3: { // link another owned chain after this one
      const std::size_t pick = in.byte() % (owned.size() + 1);
      if (d && pick < owned.size() && owned[pick] != d) {
        QEL_link(d, owned[pick]);
        owned.erase(owned.begin() + static_cast<long>(pick));
      }
      break;
    }
    case 4:
      if (d && d->numColumns)
        QEL_SetColumnPrint(d, d->pColumns[in.byte() % d->numColumns].keywordId, in.byte() % 3,
                           in.byte() % 2);
      break;
    case 5:
      if (d && d->numColumns)
        QEL_RenameColumnKeyword(d, &session, d->pColumns[in.byte() % d->numColumns].keywordId,
                                static_cast<GS_TokenValues>(in.word() % 8000));
      break;
    case 6:
      if (d) {
        std::vector<int> order(static_cast<std::size_t>(d->numRows) + 1);
        SORTOutput(d, order.data());
      }
      break;
    case 7:
      if (d)
        print(d, in);
      break;
    case 8:
      meta(in);
      break;
    case 9:
      if (d) {
        QEL_Free(d);
        owned.erase(std::find(owned.begin(), owned.end(), d));
      }
      break;
    case 10: // the next allocations fail (once, or from then on)
      framework::testing::setFailAfter(in.byte() % 64, in.byte() % 2);
      break;
    }
  }
  framework::testing::setFailAfter(-1);
  for (QEL_DESC *d : owned)
    QEL_Free(d);
  if (framework::Memory::liveAllocations() != baseline)
    fail("blocks leaked");
  return 0;
}
