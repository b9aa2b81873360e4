// The web interface's script, byte for byte, and evaluated by Node.js.
#include "support/fixture_tables.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <string>
#include <vector>

namespace {

using Preferences = services::user::Preferences;

class Json : public qeltest::SessionTest {
protected:
  void SetUp() override {
    SessionTest::SetUp();
    session_.getPreferences().setOutputFormat(Preferences::OUTPUT_JSON);
  }
  std::string print(QEL_DESC *d) {
    out_.Rewind();
    JSONRenderer(&session_).PrintTable(d, 0, 0);
    return out_.pTail();
  }
};

// One snmp-users row: separator, indentation, (name, slot, id).
std::string row(const char *sep, const std::string &name, int slot, int oid,
                const char *objName = "", const std::string &pad = "  ") {
  return sep + pad + "new APISnmpUsers([\n" + pad + "  new APIProp({name:\"name\",value:\"" +
         name + "\"}),\n" + pad + "  new APIProp({name:\"slot\",value:\"" +
         std::to_string(slot) + "\"})],\n" + pad + "  {basetype:\"snmp-users\",name:\"" +
         objName + "\",oid:\"" + std::to_string(oid) + "\"})";
}

TEST(ToJson, ConstructorNames) {
  struct Case {
    const char *in, *out;
  } cases[] = {{"vdisk-statistics", "VdiskStatistics"}, {"host_port", "HostPort"},
               {"show-other-MC-status", "ShowOtherMCStatus"}, {"", ""},
               {"a--b", "A-b"}, {"-x", "-x"}, {"trailing-", "Trailing"}, {"x-1", "X1"}};
  for (const auto &c : cases) {
    std::vector<char> buf(c.in, c.in + std::strlen(c.in) + 1);
    EXPECT_EQ(toJson(buf.data()), buf.data());
    EXPECT_STREQ(buf.data(), c.out) << c.in;
  }
  EXPECT_EQ(toJson(nullptr), nullptr);
}

// Rows with their object name; the escape scratch grows with the longest
// text one renderer sees.
TEST_F(Json, RowsWithEscapedTextsOfGrowingLength) {
  std::string text(100, '"'), escaped;
  for (char c : text)
    escaped += std::string("\\") + c;
  EXPECT_EQ(print(own(userRows({"q\"", text + "\\\r\n"}, tGSvolume))),
            row("\n", "q\\\"", 1, 1, "volume") +
                row(",\n", escaped + "\\\\\\r\\n", 2, 2, "volume"));
}

TEST_F(Json, NestedTablesTakeIdsInsideTheRow) {
  QEL_DESC *d = logRows(userRows({"n1", "n2"}));
  QEL_FillColumnQEL(&session_, d, 1, 1, userRows({})); // no rows: skipped entirely
  EXPECT_EQ(print(d), "\n  new APIManagedLogs([\n"
                      "    new APIProp({name:\"name\",value:\"alpha\"})," +
                          row("\n", "n1", 1, 2, "", "    ") + row(",\n", "n2", 2, 3, "", "    ") +
                          ",\n    new APIProp({name:\"slot\",value:\"7\"})],\n"
                          "    {basetype:\"managed-logs\",name:\"\",oid:\"1\"}),\n"
                          "  new APIManagedLogs([\n"
                          "    new APIProp({name:\"name\",value:\"beta\"}),\n"
                          "    new APIProp({name:\"slot\",value:\"8\"})],\n"
                          "    {basetype:\"managed-logs\",name:\"\",oid:\"4\"})");
}

TEST_F(Json, ARowOfOnlyANestedTable) {
  static PropertyMetaData only[1] = {{tGSunhealthy_2Dcomponent, 1, COLTYPE_QEL, tGSnone, tGSnone,
                                      true, true, false, false, false, SORT_NONE, nullptr}};
  TableMetaDataManager::getTableMetaDataManager(LOCALE_EN)
      ->addTable(tGSinitiators, only, 1, true, pGSnone, pGSnone, pGSnone);
  QEL_DESC *d = own(QEL_Create(&session_, tGSinitiators, tGSnone, 1, 0));
  QEL_FillColumnQEL(&session_, d, 0, 0, userRows({"n1"}));
  EXPECT_EQ(print(d), "\n  new APIInitiators([" + row("\n", "n1", 1, 2, "", "    ") +
                          "],\n    {basetype:\"initiators\",name:\"\",oid:\"1\"})");
}

TEST_F(Json, SeparatorsBetweenDescriptors) {
  // rows, empty with jsonSeparator, rows: the comma survives the empty one.
  QEL_DESC *a = own(userRows({"n1"}));
  QEL_DESC *empty = userRows({});
  empty->jsonSeparator = 1;
  QEL_link(a, empty);
  QEL_link(a, userRows({"n1"}));
  EXPECT_EQ(print(a), row("\n", "n1", 1, 1) + "," + row("\n", "n1", 1, 2));
  // Without it the comma is missing; an empty table first adds nothing.
  QEL_DESC *b = own(userRows({"n1"}));
  QEL_link(b, userRows({}));
  QEL_link(b, userRows({"n1"}));
  EXPECT_EQ(print(b), row("\n", "n1", 1, 1) + row("\n", "n1", 1, 2));
  QEL_DESC *c = own(userRows({}));
  QEL_link(c, userRows({"n1"}));
  EXPECT_EQ(print(c), row("\n", "n1", 1, 1));
}

TEST_F(Json, StorageSizesGetANumericCompanion) {
  QEL_DESC *d = own(QEL_Create(&session_, tGShost_2Dgroup_2Dview_2Dmappings, tGSnone, 1, 0));
  QEL_FillColumnString(&session_, d, 0, 0, "x");
  QEL_FillColumnBlocks(&session_, d, 1, 0, "2048");
  EXPECT_EQ(print(d), "\n  new APIHostGroupViewMappings([\n"
                      "    new APIProp({name:\"name\",value:\"x\"}),\n"
                      "    new APIProp({name:\"size\",value:\"1.05MB\"}),\n"
                      "    new APIProp({name:\"size-numeric\",value:\"2048\"})],\n"
                      "    {basetype:\"host-group-view-mappings\",name:\"\",oid:\"1\"})");
}

// Node.js evaluates the whole document with small constructors; every value
// read back equals the text filled, stripped of surrounding white space.
TEST_F(Json, NodeEvaluatesTheDocument) {
  const std::vector<std::string> values = {
      "say \"hi\"", "back\\slash", "two\nlines", "cr\rhere", "naïve 日本語 ü",
      "  padded  ", "'single'", "</script>", "tab\there", "$dollar {brace}"};
  QEL_DESC *d = own(QEL_Create(&session_, tGSmanaged_2Dlogs, tGSnone,
                               static_cast<int>(values.size()), 0));
  for (std::size_t r = 0; r < values.size(); ++r) {
    QEL_FillColumnString(&session_, d, 0, static_cast<int>(r), values[r].c_str());
    QEL_DESC *child = QEL_Create(&session_, tGSsnmp_2Dusers, tGSnone, 1, 0);
    QEL_FillColumnString(&session_, child, 0, 0, values[r].c_str());
    QEL_FillColumnU32(&session_, child, 1, 0, 5);
    QEL_FillColumnQEL(&session_, d, 1, static_cast<int>(r), child);
  }
  for (auto type : {Preferences::OUTPUT_JSON, Preferences::OUTPUT_JSON_ALT}) {
    session_.getPreferences().setOutputFormat(type);
    out_.Rewind();
    QEL_Print_Data(d, &session_, out_, false, false, nullptr);
    char path[] = "/tmp/qel_json_XXXXXX";
    int fd = mkstemp(path);
    ASSERT_GE(fd, 0);
    FILE *f = fdopen(fd, "w");
    std::fputs(
        "const fs = require('fs');\n"
        "function APIData(items) { this.items = items; }\n"
        "function APIProp(p) { this.name = p.name; this.value = p.value; }\n"
        "function row(props, id) { this.props = props; this.id = id; }\n"
        "const APIManagedLogs = row, APISnmpUsers = row;\n"
        "const names = [];\n"
        "function walk(r) { for (const p of r.props) {\n"
        "  if (p instanceof APIProp) { if (p.name === 'name') names.push(p.value); }\n"
        "  else walk(p); } }\n"
        "const data = eval(fs.readFileSync(process.argv[2], 'utf8'));\n"
        "for (const r of data.items) walk(r);\n"
        "process.stdout.write(JSON.stringify(names));\n",
        f);
    std::fclose(f);
    std::string doc = std::string(path) + ".js";
    std::ofstream(doc) << out_.pTail();
    std::string command = std::string("node ") + path + " " + doc + " > " + path + ".out";
    ASSERT_EQ(std::system(command.c_str()), 0) << out_.pTail();
    std::ifstream in(std::string(path) + ".out");
    std::string got((std::istreambuf_iterator<char>(in)), std::istreambuf_iterator<char>());
    std::string expected = "[";
    for (std::size_t i = 0; i < values.size(); ++i) {
      std::string v = values[i];
      v.erase(0, v.find_first_not_of(" \t\r\n"));
      v.erase(v.find_last_not_of(" \t\r\n") + 1);
      std::string quoted;
      for (char c : v) { // JSON.stringify's escaping of these values
        if (c == '"' || c == '\\')
          quoted += std::string("\\") + c;
        else if (c == '\n')
          quoted += "\\n";
        else if (c == '\r')
          quoted += "\\r";
        else if (c == '\t')
          quoted += "\\t";
        else
          quoted += c;
      }
      for (int k = 0; k < 2; ++k)
        expected += (expected.size() > 1 ? ",\"" : "\"") + quoted + "\"";
    }
    expected += "]";
    EXPECT_EQ(got, expected);
    std::remove(path);
    std::remove(doc.c_str());
    std::remove((std::string(path) + ".out").c_str());
  }
}


} // namespace
