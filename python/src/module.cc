// The Python module zestra._zestra: zestra::Extract and the WARC reader for
// Python, wrapped by the package zestra (python/zestra/__init__.py), which
// documents the functions for its users.
//
// Every extraction and every read of an archive runs with the GIL released,
// so Python threads extract in parallel; extract_many runs a pool of C++
// threads over pages copied out of their Python objects first.
#include <pybind11/pybind11.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <atomic>
#include <cerrno>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "zestra/warc.h"
#include "zestra/zestra.h"

namespace py = pybind11;

namespace {

// The page's bytes and the charset they are in: a str is read as its UTF-8
// form, whose charset is known; bytes in the charset asked for.
struct Page {
  std::string bytes;
  int charset = zestra::kSniffCharset;
};

// An extracted page, with the archive fields when it came from one.
struct PyResult {
  zestra::Result result;
  std::string url;
  std::string record_id;
  std::string date;
};

zestra::Options ParseOptions(const std::string& layout, const py::object& charset, bool whole) {
  zestra::Options options;
  if (!zestra::LayoutFromName(layout, &options.layout)) {
    throw py::value_error("unknown layout '" + layout + "': use 'blocks' or 'tables'");
  }
  if (!charset.is_none()) {
    if (!py::isinstance<py::str>(charset)) throw py::type_error("charset must be a str or None");
    const std::string label = charset.cast<std::string>();
    options.charset = zestra::CharsetFromLabel(label);
    if (options.charset == zestra::kSniffCharset) throw py::value_error("unknown charset '" + label + "'");
  }
  options.whole_text = whole;
  return options;
}

Page ToPage(const py::handle& html, const zestra::Options& options) {
  Page page;
  page.charset = options.charset;
  if (py::isinstance<py::bytes>(html)) {
    page.bytes = html.cast<std::string>();
  } else if (py::isinstance<py::bytearray>(html) || py::isinstance<py::memoryview>(html)) {
    // bytes(x) copies any object of the buffer protocol.
    PyObject* copy = PyBytes_FromObject(html.ptr());
    if (copy == nullptr) throw py::error_already_set();
    page.bytes = py::reinterpret_steal<py::bytes>(copy).cast<std::string>();
  } else if (py::isinstance<py::str>(html)) {
    // UTF-8, with lone surrogates (which no page can hold) as U+FFFD.
    py::object encoded = py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(html.ptr(), "utf-8", "replace"));
    if (!encoded) throw py::error_already_set();
    page.bytes = encoded.cast<std::string>();
    page.charset = zestra::CharsetFromLabel("utf-8");
  } else {
    throw py::type_error(std::string("html must be bytes or str, not ") + Py_TYPE(html.ptr())->tp_name);
  }
  return page;
}

zestra::Result ExtractPage(const Page& page, zestra::Options options) {
  options.charset = page.charset;
  return zestra::Extract(page.bytes, options);
}

PyResult Extract(const py::object& html, const std::string& layout, const py::object& charset, bool whole,
                 const std::string& format, const std::string& url) {
  zestra::Options options = ParseOptions(layout, charset, whole);
  if (!zestra::FormatFromName(format, &options.format)) {
    throw py::value_error("unknown format '" + format + "': use 'text', 'markdown' or 'html'");
  }
  options.url = url;
  const Page page = ToPage(html, options);
  PyResult out;
  py::gil_scoped_release release;
  out.result = ExtractPage(page, options);
  return out;
}

std::vector<PyResult> ExtractMany(const py::iterable& pages, int jobs, const std::string& layout,
                                  const py::object& charset, bool whole) {
  const zestra::Options options = ParseOptions(layout, charset, whole);
  if (jobs < 1) throw py::value_error("jobs must be at least 1");
  std::vector<Page> inputs;
  for (const py::handle& html : pages) inputs.push_back(ToPage(html, options));
  std::vector<PyResult> results(inputs.size());
  py::gil_scoped_release release;
  std::atomic<std::size_t> next{0};
  std::atomic<bool> out_of_memory{false};
  auto worker = [&] {
    for (std::size_t i; (i = next++) < inputs.size();) {
      try {
        results[i].result = ExtractPage(inputs[i], options);
      } catch (const std::bad_alloc&) {
        out_of_memory = true;
      }
      std::string().swap(inputs[i].bytes);
    }
  };
  const std::size_t threads = std::min<std::size_t>(static_cast<std::size_t>(jobs), inputs.size());
  std::vector<std::thread> pool;
  for (std::size_t i = 1; i < threads; ++i) pool.emplace_back(worker);
  worker();
  for (std::thread& thread : pool) thread.join();
  if (out_of_memory) throw std::bad_alloc();
  return results;
}

// The records of one archive, for Python's iteration protocol.
class WarcIterator {
 public:
  // Reads the records of `path` that start at or after byte `start` (which
  // must start a record or its gzip member) and before byte `end`.
  WarcIterator(const std::string& path, std::uint64_t start, std::uint64_t end) : start_(start), end_(end) {
    std::string reason;
    std::unique_ptr<zestra::WarcSource> source = zestra::OpenWarcFile(path, &reason, start);
    if (source == nullptr) {
      // OSError(errno, message, filename) gives FileNotFoundError and the like.
      const int code = reason == std::generic_category().message(ENOENT)   ? ENOENT
                       : reason == std::generic_category().message(EISDIR) ? EISDIR
                       : reason == std::generic_category().message(EACCES) ? EACCES
                                                                            : EIO;
      PyErr_SetObject(PyExc_OSError, py::make_tuple(code, reason, path).ptr());
      throw py::error_already_set();
    }
    reader_ = std::make_unique<zestra::WarcReader>(std::move(source), path);
  }

  // The next page record; raises StopIteration at the end, WarcError on a
  // truncated or corrupt record.
  zestra::WarcRecord Next() {
    zestra::WarcRecord record;
    bool page = false;
    {
      py::gil_scoped_release release;
      page = reader_->Next(&record);
    }
    if (page) {
      record.offset += start_;
      if (record.offset < end_) return record;
      throw py::stop_iteration();
    }
    if (!reader_->Error().empty()) {
      py::object error = py::module_::import("zestra").attr("WarcError");
      PyErr_SetString(error.ptr(), reader_->Error().c_str());
      throw py::error_already_set();
    }
    throw py::stop_iteration();
  }

  py::dict Counts() const {
    const zestra::WarcCounts& counts = reader_->Counts();
    py::dict out;
    out["records"] = counts.records;
    out["pages"] = counts.pages;
    out["skipped_type"] = counts.skipped_type;
    out["skipped_status"] = counts.skipped_status;
    out["skipped_not_html"] = counts.skipped_not_html;
    out["input_bytes"] = counts.input_bytes;
    return out;
  }

 private:
  std::unique_ptr<zestra::WarcReader> reader_;
  const std::uint64_t start_;
  const std::uint64_t end_;
};

PyResult ExtractRecord(const zestra::WarcRecord& record, const std::string& layout, const py::object& charset,
                       bool whole) {
  zestra::Options options = ParseOptions(layout, charset, whole);
  options.transport_charset = zestra::CharsetFromLabel(record.charset_label);
  // Relative links and the canonical address resolve against the record's
  // own address, as the tool reads archives.
  options.url = record.url;
  PyResult out;
  out.url = record.url;
  out.record_id = record.record_id;
  out.date = record.date;
  py::gil_scoped_release release;
  out.result = zestra::Extract(record.payload, options);
  return out;
}


// Header text as str: UTF-8, with bytes that are not as U+FFFD.
py::str Decode(const std::string& text) {
  PyObject* decoded = PyUnicode_DecodeUTF8(text.data(), static_cast<Py_ssize_t>(text.size()), "replace");
  if (decoded == nullptr) throw py::error_already_set();
  return py::reinterpret_steal<py::str>(decoded);
}

py::object OrNone(const std::string& text) { return text.empty() ? py::none() : py::object(Decode(text)); }

py::list HeaderList(const zestra::WarcHeaders& headers) {
  py::list out;
  for (const auto& [name, value] : headers) {
    out.append(py::make_tuple(Decode(name), Decode(value)));
  }
  return out;
}

// The article's facts as a dict of the tool's JSON "metadata" object: every
// field, empty strings and lists where the page states none, and "sources",
// the source of each field found.
py::dict MetadataDict(const zestra::Metadata& metadata) {
  auto strings = [](const std::vector<std::string>& values) {
    py::list out;
    for (const std::string& value : values) out.append(Decode(value));
    return out;
  };
  py::dict out;
  out["title"] = Decode(metadata.title);
  out["author"] = strings(metadata.author);
  out["date_published"] = Decode(metadata.date_published);
  out["date_modified"] = Decode(metadata.date_modified);
  out["site_name"] = Decode(metadata.site_name);
  out["description"] = Decode(metadata.description);
  out["language"] = Decode(metadata.language);
  out["canonical_url"] = Decode(metadata.canonical_url);
  out["image"] = Decode(metadata.image);
  out["tags"] = strings(metadata.tags);
  py::dict sources;
  for (const auto& [field, source] : metadata.sources) sources[Decode(field)] = Decode(source);
  out["sources"] = sources;
  return out;
}

}  // namespace

PYBIND11_MODULE(_zestra, m) {
  m.doc() = "The compiled part of the zestra package.";
  m.attr("__version__") = zestra::Version();

  py::class_<PyResult>(m, "Result")
      .def_property_readonly("text", [](const PyResult& r) { return r.result.text; })
      .def_property_readonly("title", [](const PyResult& r) { return r.result.title; })
      .def_property_readonly("type",
                             [](const PyResult& r) {
                               return r.result.type == zestra::DocumentType::kContent ? "content" : "links";
                             })
      .def_property_readonly("charset", [](const PyResult& r) { return r.result.charset_name; })
      .def_property_readonly("layout", [](const PyResult& r) { return zestra::LayoutName(r.result.layout); })
      .def_property_readonly("url", [](const PyResult& r) { return OrNone(r.url); })
      .def_property_readonly("warc_record_id", [](const PyResult& r) { return OrNone(r.record_id); })
      .def_property_readonly("date", [](const PyResult& r) { return OrNone(r.date); })
      .def_property_readonly("formatted", [](const PyResult& r) { return OrNone(r.result.formatted); })
      .def_property_readonly("metadata", [](const PyResult& r) { return MetadataDict(r.result.metadata); });

  py::class_<zestra::WarcRecord>(m, "WarcRecord")
      .def_property_readonly("version", [](const zestra::WarcRecord& r) { return Decode(r.version); })
      .def_property_readonly("type", [](const zestra::WarcRecord& r) { return Decode(r.type); })
      .def_property_readonly("url", [](const zestra::WarcRecord& r) { return Decode(r.url); })
      .def_property_readonly("record_id", [](const zestra::WarcRecord& r) { return Decode(r.record_id); })
      .def_property_readonly("date", [](const zestra::WarcRecord& r) { return Decode(r.date); })
      .def_readonly("content_length", &zestra::WarcRecord::content_length)
      .def_readonly("offset", &zestra::WarcRecord::offset)
      .def_readonly("http_status", &zestra::WarcRecord::http_status)
      .def_property_readonly("http_status_line", [](const zestra::WarcRecord& r) { return Decode(r.http_status_line); })
      .def_property_readonly("content_type", [](const zestra::WarcRecord& r) { return Decode(r.content_type); })
      .def_property_readonly("charset", [](const zestra::WarcRecord& r) { return OrNone(r.charset_label); })
      .def_property_readonly("headers", [](const zestra::WarcRecord& r) { return HeaderList(r.headers); })
      .def_property_readonly("http_headers", [](const zestra::WarcRecord& r) { return HeaderList(r.http_headers); })
      .def_property_readonly("payload", [](const zestra::WarcRecord& r) { return py::bytes(r.payload); });

  py::class_<WarcIterator>(m, "WarcIterator")
      .def(py::init<const std::string&, std::uint64_t, std::uint64_t>(), py::arg("path"), py::arg("start"),
           py::arg("end"))
      .def("__iter__", [](WarcIterator& it) -> WarcIterator& { return it; })
      .def("__next__", &WarcIterator::Next)
      .def_property_readonly("counts", &WarcIterator::Counts);

  m.def("extract", &Extract, py::arg("html"), py::kw_only(), py::arg("layout") = "blocks",
        py::arg("charset") = py::none(), py::arg("whole") = false, py::arg("format") = "text",
        py::arg("url") = "");
  m.def("extract_many", &ExtractMany, py::arg("pages"), py::kw_only(), py::arg("jobs"), py::arg("layout") = "blocks",
        py::arg("charset") = py::none(), py::arg("whole") = false);
  m.def(
      "check_options", [](const std::string& layout, const py::object& charset) { ParseOptions(layout, charset, false); },
      py::arg("layout"), py::arg("charset"));
  m.def("extract_record", &ExtractRecord, py::arg("record"), py::kw_only(), py::arg("layout") = "blocks",
        py::arg("charset") = py::none(), py::arg("whole") = false);
}
