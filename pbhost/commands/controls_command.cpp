#include "pbhost/commands/controls_command.h"

#include <algorithm>
#include <array>

#include "pbhost/files/printable.h"
#include "pbhost/session/control_list.h"
#include "pbhost/session/control_notes.h"
#include "pbhost/session/scene.h"

namespace pbhost {

namespace {

using Row = std::array<std::string, 7>;

// The array's strings, joined with `between`.
std::string joined(const Json& array, const char* between) {
    std::string text;
    for (const Json& part : array)
        text.append(text.empty() ? "" : between)
            .append(part.is_string() ? part.get<std::string>() : part.dump());
    return text;
}

std::string cell(const Json& value) {
    return value.is_null()     ? "-"
           : value.is_array()  ? joined(value, ",")
           : value.is_string() ? value.get<std::string>()
                               : value.dump();
}

Row rowOf(const Json& control) {
    std::string notes =
        joined(control["choices"].is_null() ? Json::array() : control["choices"], "|");
    if (!control["display"].is_null())
        notes = control["display"].get<std::string>();
    for (const char* key : {"image", "description"})
        if (control.contains(key))
            notes.append(notes.empty() ? "" : ", ").append(control[key].get<std::string>());
    if (control["hidden"] == true)
        notes.append(notes.empty() ? "" : ", ").append("hidden");
    return {cell(control["index"]),
            cell(control["name"]),
            cell(control["kind"]),
            cell(control["value"]),
            cell(control["default"]),
            control["range"].is_null() ? "-" : joined(control["range"], " to "),
            notes};
}

std::string table(const std::vector<Row>& rows) {
    std::array<std::size_t, std::tuple_size_v<Row>> widths{};
    for (const Row& row : rows)
        for (std::size_t i = 0; i < row.size(); ++i)
            widths[i] = std::max(widths[i], row[i].size());
    std::string text;
    for (const Row& row : rows) {
        std::string line;
        for (std::size_t i = 0; i < row.size(); ++i)
            line.append(row[i]).append(widths[i] + 2 - row[i].size(), ' ');
        text.append(line, 0, line.find_last_not_of(' ') + 1).append("\n");
    }
    return text;
}

} // namespace

void showControls(Session& session, const ControlsRequest& request, std::string& text) {
    Scene scene(session, transparentSource(emptyLayerWidth, emptyLayerHeight, Depth::Bits8));
    scene.apply(request.file);
    Json controls = Json::array();
    const ControlNotes notes = notesOf(session.host, request.file);
    for (const std::size_t index : listedControls(scene.effect, request.all)) {
        Json control = controlAsJson(scene.effect, index, 0);
        const std::string description = descriptionOf(notes, nameOf(scene.effect, index));
        if (!description.empty())
            control["description"] = description;
        if (hostkit::isLayerControl(scene.effect.definitions[index]) &&
            index < notes.imageTypes.size())
            control["image"] = notes.imageTypes[index];
        controls.push_back(control);
    }
    std::vector<Row> rows = {{"index", "name", "kind", "value", "default", "range", ""}};
    for (const Json& control : controls)
        rows.push_back(rowOf(control));
    text = request.asJson ? jsonText(Json{{"title", scene.effect.title()}, {"controls", controls}})
                          : printable(scene.effect.title() + "\n" + table(rows));
    scene.checkFile(request.findings);
}

} // namespace pbhost
