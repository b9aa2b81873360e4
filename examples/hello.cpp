// A complete libqel program: start the output service, create a table, fill
// it, print it as a console table and as an XML API document, free it and
// stop the service.
//
//   c++ -std=c++17 hello.cpp $(pkg-config --cflags --libs qel) -o hello
#include <qel/qel.h>

#include <unistd.h>

#include <cstdint>
#include <cstdio>

int main() {
  // The library's diagnostics go to one sink; by default it writes them to
  // stderr. Route them elsewhere (here: stderr with a prefix, debug lines
  // dropped), or pass a sink that does nothing to quiet them.
  framework::Logger::setSink([](const framework::LogRecord &record, void *) {
    if (record.route != framework::LogRecord::Route::Debug)
      std::fprintf(stderr, "hello: libqel: %s\n", record.text);
  });

  // 1. Start the service. Building it registers the table catalogue; no
  //    table can be created before.
  framework::Service *service = framework::Container::getContainer()->buildService(pGSQel);
  if (!service || !service->Startup())
    return 1;

  // 2. A session: where the output goes and how it is printed.
  utility::FileStream out(STDOUT_FILENO, 4096);
  services::user::Session session(out);
  session.getPreferences().setOutputFormat(services::user::Preferences::OUTPUT_CONSOLE);
  session.getContext().setScreenWidth(80);

  // 3. Create a volume-names table (columns: 0 volume-name, 1 serial-number)
  //    with room for two rows, and fill it.
  QEL_DESC *table = QEL_Create(&session, tGSvolume_2Dnames, tGSnone, 2, QEL_FORMAT_ROWS);
  if (!table)
    return 1;
  //    Each fill names the column's type; a serial number is 16 bytes,
  //    printed in hex.
  const std::uint8_t serials[2][16] = {{0x00, 0xc0, 0xff, 0x0a, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 1},
                                       {0x00, 0xc0, 0xff, 0x0a, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 2}};
  QEL_FillColumnString(&session, table, 0, 0, "vol-a");
  QEL_FillColumnHexString(&session, table, 1, 0, serials[0]);
  QEL_FillColumnString(&session, table, 0, 1, "vol-b");
  QEL_FillColumnHexString(&session, table, 1, 1, serials[1]);

  // 4. Print it for a person, then for a management client.
  QEL_Print_Data(table, &session, out, false, false, nullptr);
  session.getPreferences().setOutputFormat(services::user::Preferences::OUTPUT_API);
  QEL_Print_Data(table, &session, out, false, true, "show volume-names");
  out.FlushOutputStream();

  // 5. Free the table (and everything linked to it), stop the service.
  QEL_Free(table);
  service->Shutdown();
  return out.isOutputStreamInError() ? 1 : 0;
}
