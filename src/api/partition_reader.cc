#include "api/partition_reader.h"

#include <cstdint>
#include <new>
#include <string>
#include <string_view>

#include "api/com_holders.h"
#include "api/partition_stream.h"
#include "zestra/api/beautified_text.h"
#include "zestra/charset/charset_detection.h"
#include "zestra/charset/convert_stream.h"
#include "zestra/platform/com/hglobal.h"
#include "zestra/platform/com/hglobal_stream.h"
#include "zestra/platform/com/ole_container.h"
#include "zestra/platform/com/persist_stream_init.h"
#include "zestra/platform/com/web_browser.h"
#include "zestra/stream/memory_buffer.h"

namespace ZestraNS {
namespace {

// The MIME-type description of a plain-text document.
constexpr std::u16string_view kTextDocument = u"Text Document";

using StreamBuf = Orvel::BinaryStreamBufT<unsigned int>;

// Bytes of the in-memory stream read per call while detecting.
constexpr ULONG kDetectionChunk = 4096;

// Runs charset detection on the saved source in `memory`: reads the bytes
// that detection looks at (the first OrvelDetection::kGuessBytes) from the
// start of the stream, detects, and moves the stream back to its start.
// Returns 0 on success, non-zero when the stream cannot be read or
// detection fails.
int DetectSavedCharset(IStream* memory, Orvel::CHARSET& charset) {
  OrvelFile::MemoryBuffer sample(kDetectionChunk);
  uint8_t chunk[kDetectionChunk];
  int status = 0;
  for (size_t total = 0; total < OrvelDetection::kGuessBytes;) {
    ULONG read = 0;
    if (FAILED(memory->Read(chunk, kDetectionChunk, &read))) {
      status = 1;
      break;
    }
    if (read == 0) break;
    if (sample.Put(chunk, read) != read) {
      status = 1;
      break;
    }
    total += read;
  }
  LARGE_INTEGER start{};
  memory->Seek(start, STREAM_SEEK_SET, nullptr);
  if (status != 0) return status;
  return OrvelDetection::DetectCharset(sample, charset);
}

// Stores the saved source `source`, of the detected charset, into the
// partition's stream and sets the partition's charset to what the stream
// then holds. The charset is set only once the bytes are all written.
void StoreSavedSource(Orvel::CHARSET detected, StreamBuf& source, HtmlDocPartitions& partition) {
  StreamBuf& target = *partition.stream->Buffer();
  switch (detected) {
    case Orvel::Utf16LECharset:
      OrvelCharset::ConvertStream(Orvel::Utf16LECharset, Orvel::Utf8Charset, source, target);
      partition.charset = Orvel::Utf8Charset;
      break;
    case Orvel::UnknownCharset:
      OrvelDetection::CharsetLanguageDetection::CleanStreamFromJunkCharset(source, target);
      partition.charset = Orvel::Windows1252Charset;
      break;
    default:
      source.Copy(static_cast<Orvel::BaseBinaryStreamBuf&>(target), StreamBuf::kAll);
      partition.charset = detected;
      break;
  }
}

// The path through IPersistStreamInit: the document saves its source into
// an in-memory stream, which is read in place.
HRESULT ReadSavedSource(IPersistStreamInit* persist, HtmlDocPartitions& partition) {
  ComRef<IStream> memory;
  const HRESULT created = CreateStreamOnHGlobal(nullptr, 1, memory.Out());
  if (FAILED(created)) return created;
  const HRESULT saved = persist->Save(memory.Get(), 0);
  LARGE_INTEGER start{};
  memory->Seek(start, STREAM_SEEK_SET, nullptr);
  if (FAILED(saved)) return saved;

  Orvel::CHARSET detected = Orvel::UnknownCharset;
  if (DetectSavedCharset(memory.Get(), detected) != 0) return ZESTRA_E_CHARSET_NOT_DETECTED;

  partition.stream = NewPartitionStream();
  STATSTG stat{};
  const HRESULT result = memory->Stat(&stat, STATFLAG_NONAME);
  HGLOBAL block = nullptr;
  GetHGlobalFromStream(memory.Get(), &block);
  const void* bytes = GlobalLock(block);
  if (bytes == nullptr) return result;
  {
    OrvelFile::MemoryBuffer source(bytes, stat.cbSize.u.LowPart, OrvelFile::MemoryBuffer::kReadInPlace);
    try {
      StoreSavedSource(detected, source, partition);
    } catch (...) {
      // The partition keeps the bytes written so far and its old charset,
      // so it will not be parsed.
    }
  }
  GlobalUnlock(block);
  return result;
}

// The path without IPersistStreamInit: the body element's outer HTML.
HRESULT ReadBodyHtml(IHTMLDocument2* document, HtmlDocPartitions& partition) {
  ComRef<IHTMLElement> body;
  HRESULT hr = document->get_body(body.Out());
  if (FAILED(hr) || !body) return hr;
  OwnedBstr html;
  hr = body->get_outerHTML(html.Out());
  if (FAILED(hr)) return hr;
  partition.charset = Orvel::Utf8Charset;
  partition.stream = NewUtf8PartitionStream(UnitsToFirstNull(html.Get()));
  return hr;
}

// Appends a child for `object` to `parent` and reads it, when the object is
// a web browser hosting an HTML document; otherwise does nothing.
void ReadFrame(IUnknown* object, HtmlDocPartitions& parent) {
  ComRef<IWebBrowser2> browser;
  if (FAILED(browser.QueryFrom(object, IID_IWebBrowser2)) || !browser) return;
  ComRef<IDispatch> hosted;
  if (FAILED(browser->get_Document(hosted.Out())) || !hosted) return;
  ComRef<IHTMLDocument2> frame;
  if (FAILED(frame.QueryFrom(hosted.Get(), IID_IHTMLDocument2)) || !frame) return;
  HtmlDocPartitions::Holder child(new HtmlDocPartitions());
  if (!child) throw std::bad_alloc();
  parent.children.Add(child);
  // A frame that cannot be read stays listed, empty.
  ReadPartitionTree(frame.Get(), *child);
}

}  // namespace

HRESULT ReadPartitionContent(IHTMLDocument2* document, HtmlDocPartitions& partition) {
  OwnedBstr mime_type;
  if (FAILED(document->get_mimeType(mime_type.Out()))) {
    partition.contentType = HtmlDocPartitions::HtmlContent;
  } else {
    partition.contentType = UnitsToFirstNull(mime_type.Get()) == kTextDocument ? HtmlDocPartitions::TextContent
                                                                               : HtmlDocPartitions::HtmlContent;
  }
  ComRef<IPersistStreamInit> persist;
  if (SUCCEEDED(persist.QueryFrom(document, IID_IPersistStreamInit)) && persist) {
    return ReadSavedSource(persist.Get(), partition);
  }
  return ReadBodyHtml(document, partition);
}

HRESULT ReadPartitionTree(IHTMLDocument2* document, HtmlDocPartitions& partition) {
  const HRESULT hr = ReadPartitionContent(document, partition);
  if (hr != S_OK) return hr;
  ComRef<IOleContainer> container;
  if (FAILED(container.QueryFrom(document, IID_IOleContainer)) || !container) return S_OK;
  ComRef<IEnumUnknown> objects;
  if (FAILED(container->EnumObjects(OLECONTF_EMBEDDINGS, objects.Out())) || !objects) return S_OK;
  for (;;) {
    ComRef<IUnknown> object;
    if (objects->Next(1, object.Out(), nullptr) != S_OK) break;
    if (object) ReadFrame(object.Get(), partition);
  }
  return S_OK;
}

}  // namespace ZestraNS
