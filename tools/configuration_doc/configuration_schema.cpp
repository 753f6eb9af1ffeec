#include "configuration_schema.h"

#include <stdexcept>
#include <utility>

#include "record_codec/record_json.h"

namespace configuration_doc {

std::string file_schema(const ConfigurationFile &file) {
    using record_codec::OrderedJson;
    const record_codec::Record *record = record_codec::find_record(file.record);
    if (!record) throw std::runtime_error("no record " + std::string(file.record));

    OrderedJson schema = {{"$schema", "https://json-schema.org/draft/2020-12/schema"},
                          {"title", std::string(file.name)}};
    OrderedJson one = record_codec::record_json_schema(*record);
    if (file.form == FileForm::kObject) {
        one.erase("title");
        schema.update(one);
    } else {
        schema["type"] = "array";
        schema["items"] = std::move(one);
        schema["maxItems"] = file.capacity;
    }
    return schema.dump(2) + "\n";
}

}  // namespace configuration_doc
