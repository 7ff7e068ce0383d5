#include "import/import_driver.h"

#include "host/mlog.h"
#include "import/dm_data.h"
#include "import/listings_import.h"
#include "import/rt_data.h"
#include "import/xmltv_data.h"
#include "text/counted_text.h"
#include "text/entities.h"
#include "text/letters.h"

using ORVANE::MLog;
using ORVANE::MSTR;

namespace {

// What one import is given.
struct Request {
  const MSTR& file_name;
  MSTR& status;
  CProgressIndicator* progress;
};

using Importer = bool (CProviderData::*)(const MSTR& file_name, MSTR& status,
                                         CProgressIndicator* progress);

// Has the store read the file. A failure's own text goes to the log, after `punctuation`; the
// user gets a general one.
std::shared_ptr<CProviderData> Import(std::shared_ptr<CProviderData> store, Importer importer,
                                      const Request& request, char punctuation) {
  if (((*store).*importer)(request.file_name, request.status, request.progress)) return store;
  MLog.Log("EPG Loader: Import failed%c [%s]", punctuation,
           XmlEscape(ViewOf(request.status)).c_str());
  request.status = "Can't identify content, don't know how to decode!";
  return nullptr;
}

// A store of no particular kind. Final, so that destroying one needs no virtual destructor.
class CPlainData final : public CProviderData {};

// The store for a cache file, by the kind of provider that its data came from.
std::shared_ptr<CProviderData> MakeStore(int epg_source) {
  switch (static_cast<ProviderKind>(epg_source)) {
    case ProviderKind::kTitanTV:
      return std::make_shared<CDMData>();
    case ProviderKind::kRadioTimes:
      return std::make_shared<CRTData>();
    case ProviderKind::kXMLTV:
      return std::make_shared<CXMLTVData>();
    default:
      return std::make_shared<CPlainData>();
  }
}

}  // namespace

std::shared_ptr<CProviderData> ImportEPGFile(const MSTR& file_name, MSTR& status,
                                             CProgressIndicator* progress) {
  CSimpleXMLReader reader;
  if (!OpenListings(reader, file_name, status)) {
    MLog.Log("%s", status.text);
    return nullptr;
  }
  CSafeNode root;
  reader.ReadRoot(root);
  reader.Close();
  const std::string_view name_space = AttributeValue(root, "xmlns");
  const std::string_view generator = AttributeValue(root, "generator-info-name");

  // A root may bear the marks of several formats: the first that is asked for here decides.
  if (EqualIgnoringCase(name_space, kMakerNamespace)) {
    MLog.Log("EPG Loader: Importing Norvex format XML, %s.", file_name.text);
    return Import(MakeStore(root.GetAttributeAsInt("EPGSource", 0)), &CProviderData::LoadCacheXML,
                  {file_name, status, progress}, '.');
  }
  if (EqualIgnoringCase(name_space, kTitanTVNamespace)) {
    MLog.Log("EPG Loader: Importing Titan TV format XML, %s.", file_name.text);
    return Import(std::make_shared<CDMData>(), &CProviderData::ImportXML,
                  {file_name, status, nullptr}, '.');
  }
  if (EqualIgnoringCase(generator, "XMLTV")) {
    MLog.Log("EPG Loader: Importing XMLTV format XML, %s.", file_name.text);
    return Import(std::make_shared<CXMLTVData>(), &CProviderData::ImportXML,
                  {file_name, status, progress}, '.');
  }
  MLog.Log("EPG Loader: Importing Radio Times format XML, %s.", file_name.text);
  return Import(std::make_shared<CRTData>(), &CProviderData::ImportXML,
                {file_name, status, nullptr}, ',');
}
