#include "import/import_driver.h"

#include <algorithm>
#include <string_view>

#include "host/mlog.h"
#include "import/listings_import.h"
#include "import/rt_data.h"
#include "import/xmltv_data.h"
#include "xml/xml_escape.h"

using ORVANE::MLog;
using ORVANE::MSTR;

namespace {

bool EqualIgnoringCase(const MSTR& a, std::string_view b) {
  const auto lower = [](char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c | 0x20) : c; };
  const std::string_view view = a.View();
  return std::equal(view.begin(), view.end(), b.begin(), b.end(),
                    [&](char x, char y) { return lower(x) == lower(y); });
}

// What one import is given.
struct Request {
  const MSTR& file_name;
  MSTR& status;
  CProgressIndicator* progress;
};

// Has the store read the file. A failure's own text goes to the log, behind `punctuation`; the
// user gets a general one.
std::shared_ptr<CProviderData> Import(std::shared_ptr<CProviderData> store, const Request& request,
                                      char punctuation) {
  if (store->ImportXML(request.file_name, request.status, request.progress)) return store;
  MLog.Log("EPG Loader: Import failed%c [%s]", punctuation,
           XmlEscape(request.status.View()).Text());
  request.status = "Can't identify content, don't know how to decode!";
  return nullptr;
}

}  // namespace

std::shared_ptr<CProviderData> ImportEPGFile(const MSTR& file_name, MSTR& status,
                                             CProgressIndicator* progress) {
  MSTR generator;
  {
    CSimpleXMLReader reader;
    if (!OpenListings(reader, file_name, status)) {
      MLog.Log("%s", status.Text());
      return nullptr;
    }
    CSafeNode root;
    reader.ReadRoot(root);
    generator = root.GetAttribute("generator-info-name");
  }
  if (EqualIgnoringCase(generator, "XMLTV")) {
    MLog.Log("EPG Loader: Importing XMLTV format XML, %s.", file_name.Text());
    return Import(std::make_shared<CXMLTVData>(), {file_name, status, progress}, '.');
  }
  MLog.Log("EPG Loader: Importing Radio Times format XML, %s.", file_name.Text());
  return Import(std::make_shared<CRTData>(), {file_name, status, nullptr}, ',');
}
