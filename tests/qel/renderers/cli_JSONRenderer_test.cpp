// The web interface's script, byte for byte. The end-to-end suite has
// Node.js evaluate whole documents, and its golden files pin tables nested
// after a row's properties.
#include "support/fixture_tables.h"

#include <cstring>

namespace {

class Json : public qeltest::SessionTest {
protected:
  std::string print(QEL_DESC *d) {
    session_.getPreferences().setOutputFormat(services::user::Preferences::OUTPUT_JSON);
    out_.Rewind();
    JSONRenderer(&session_).PrintTable(d, 0, 0);
    return out_.pTail();
  }
};

// One snmp-users row: separator, (name, slot, id), object name, indentation.
std::string row(const char *sep, const std::string &name, int slot, int oid, const char *objName = "",
                const std::string &pad = "  ") {
  return sep + pad + "new APISnmpUsers([\n" + pad + "  new APIProp({name:\"name\",value:\"" + name + "\"}),\n" +
         pad + "  new APIProp({name:\"slot\",value:\"" + std::to_string(slot) + "\"})],\n" + pad +
         "  {basetype:\"snmp-users\",name:\"" + objName + "\",oid:\"" + std::to_string(oid) + "\"})";
}

TEST(ToJson, ConstructorNames) {
  const std::pair<const char *, const char *> cases[] = {{"vdisk-statistics", "VdiskStatistics"}, {"host_port", "HostPort"},
               {"show-other-MC-status", "ShowOtherMCStatus"}, {"", ""}, {"a--b", "A-b"}, {"-x", "-x"},
               {"trailing-", "Trailing"}, {"x-1", "X1"}};
  for (const auto &c : cases) {
    std::vector<char> buf(c.first, c.first + std::strlen(c.first) + 1);
    EXPECT_EQ(toJson(buf.data()), buf.data());
    EXPECT_STREQ(buf.data(), c.second) << c.first;
  }
  EXPECT_EQ(toJson(nullptr), nullptr);
}

// A nested table between properties takes the ids after its holder's; one
// without rows is skipped entirely.
TEST_F(Json, NestedTablesInsideTheRow) {
  QEL_DESC *d = logRows(userRows({"n1", "n2"}));
  QEL_FillColumnQEL(&session_, d, 1, 1, userRows({}));
  EXPECT_EQ(print(d), "\n  new APIManagedLogs([\n    new APIProp({name:\"name\",value:\"alpha\"})," +
                          row("\n", "n1", 1, 2, "", "    ") + row(",\n", "n2", 2, 3, "", "    ") +
                          ",\n    new APIProp({name:\"slot\",value:\"7\"})],\n"
                          "    {basetype:\"managed-logs\",name:\"\",oid:\"1\"}),\n"
                          "  new APIManagedLogs([\n"
                          "    new APIProp({name:\"name\",value:\"beta\"}),\n"
                          "    new APIProp({name:\"slot\",value:\"8\"})],\n"
                          "    {basetype:\"managed-logs\",name:\"\",oid:\"4\"})");
}

TEST_F(Json, SeparatorsBetweenDescriptors) {
  // rows, empty with jsonSeparator, rows: the comma survives the empty one.
  QEL_DESC *a = own(userRows({"n1"}, tGSvolume));
  QEL_DESC *empty = userRows({});
  empty->jsonSeparator = 1;
  QEL_link(a, empty);
  QEL_link(a, userRows({"n1"}, tGSvolume));
  EXPECT_EQ(print(a), row("\n", "n1", 1, 1, "volume") + "," + row("\n", "n1", 1, 2, "volume"));
  // Without it the comma is missing.
  QEL_DESC *b = own(userRows({"n1"}));
  QEL_link(b, userRows({}));
  QEL_link(b, userRows({"n1"}));
  EXPECT_EQ(print(b), row("\n", "n1", 1, 1) + row("\n", "n1", 1, 2));
}

} // namespace
