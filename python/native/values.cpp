#include "python/native/values.h"

#include <pybind11/numpy.h>
#include <pybind11/stl.h>

#include <algorithm>
#include <cstring>
#include <limits>
#include <string>
#include <vector>

#include "host/values.h"
#include "memory_host/orvex/values/element_type.h"
#include "workbench/text/error.h"

namespace ks_hmi_python {

namespace {

using Shape = std::vector<std::size_t>;

py::object hostClass(const char* name) { return py::module_::import("ks_hmi._values").attr(name); }

// Python's own guard against values that contain themselves.
class Descent {
public:
    Descent() {
        if (Py_EnterRecursiveCall(" in a value of the host") != 0) throw py::error_already_set();
    }
    Descent(const Descent&) = delete;
    Descent& operator=(const Descent&) = delete;
    ~Descent() { Py_LeaveRecursiveCall(); }
};

Shape shapeOf(const hvArray* value) {
    const std::size_t* const lengths = hvGetDimensions(value);
    return {lengths, lengths + hvGetNumberOfDimensions(value)};
}

py::object strOf(const std::u16string& text) {
    int order = -1;
    const auto bytes = static_cast<Py_ssize_t>(text.size() * sizeof(char16_t));
    PyObject* const made =
        PyUnicode_DecodeUTF16(reinterpret_cast<const char*>(text.data()), bytes, "surrogatepass", &order);
    if (made == nullptr) throw py::error_already_set();
    return py::reinterpret_steal<py::object>(made);
}

template <class Number>
py::object numbersOf(const hvArray* value) {
    using Array = py::array_t<Number, py::array::f_style>;
    const std::size_t count = hvGetNumberOfElements(value);
    Array array(shapeOf(value));
    if (count > 0) std::memcpy(array.mutable_data(), hvGetData(value), count * sizeof(Number));
    if (count != 1) return array;
    if constexpr (std::is_same_v<Number, double> || std::is_same_v<Number, bool>) return py::cast(*array.data());
    return array.reshape({1})[py::int_(0)];
}

// Cells of a vector are a list; others keep their places.
py::object listOf(const hvArray* value) {
    py::list cells;
    for (const hvArray* const cell : ks_host::cellsOf(value)) cells.append(pythonOf(cell));
    const Shape shape = shapeOf(value);
    const bool isVector = shape.size() == 2 && (std::ranges::count(shape, 1U) > 0 || cells.empty());
    return isVector ? py::object(cells) : hostClass("_cells")(cells, py::cast(shape));
}

py::object structOf(const hvArray* value) {
    py::list fields;
    for (int i = 0; i < hvGetNumberOfFields(value); ++i) fields.append(py::str(hvGetFieldNameByNumber(value, i)));
    py::list records;
    for (const std::size_t i : ks_host::indicesOf(value)) {
        py::dict record;
        for (int k = 0; k < hvGetNumberOfFields(value); ++k) {
            const char* const name = hvGetFieldNameByNumber(value, k);
            record[py::str(name)] = pythonOf(hvGetField(value, i, name));
        }
        records.append(record);
    }
    return hostClass("StructArray")(records, fields, py::cast(shapeOf(value)));
}

HvArrayPtr textOf(const py::handle& value) {
    const auto bytes =
        py::reinterpret_steal<py::object>(PyUnicode_AsEncodedString(value.ptr(), "utf-16-le", "surrogatepass"));
    if (!bytes) throw py::error_already_set();
    const auto view = bytes.cast<std::string_view>();
    std::u16string text(view.size() / sizeof(char16_t), u'\0');
    if (!view.empty()) std::memcpy(text.data(), view.data(), view.size());
    return ks_host::makeText(std::u16string_view(text));
}

HvArrayPtr doubleOf(const py::handle& number) {
    const double value = PyLong_AsDouble(number.ptr());
    const bool isTooLarge = value == -1.0 && PyErr_Occurred() != nullptr;
    PyErr_Clear();
    if (isTooLarge || !py::float_(value).equal(number)) {
        const std::string text = "a double cannot hold " + py::str(number).cast<std::string>() +
                                 "; give numpy.int64 or numpy.uint64 of it, where one can";
        PyErr_SetString(PyExc_OverflowError, text.c_str());
        throw py::error_already_set();
    }
    return ks_host::makeDouble(value);
}

HvArrayPtr cellsOf(const py::iterable& elements, const Shape& shape) {
    HvArrayPtr cells(hvCreateCellArray(shape.size(), shape.data()));
    std::size_t at = 0;
    for (const py::handle element : elements) hvSetCell(cells.get(), at++, hostOf(element).release());
    return cells;
}

HvArrayPtr structOf(const py::list& records, const py::list& fields, const Shape& shape) {
    std::vector<std::string> names;
    for (const py::handle field : fields) names.push_back(py::str(field).cast<std::string>());
    std::vector<const char*> texts;
    texts.reserve(names.size());
    for (const std::string& name : names) texts.push_back(name.c_str());
    HvArrayPtr made(matrix::create_struct(shape, texts));
    for (std::size_t i = 0; i < records.size(); ++i)
        for (std::size_t k = 0; k < names.size(); ++k) {
            const py::object value = records[i][fields[k]];
            hvReplaceField(made.get(), i, texts[k], hostOf(value).release());
        }
    return made;
}

[[noreturn]] void refuse(const py::handle& value, const char* why) {
    throw py::type_error("the host has no such value: " + py::repr(py::type::of(value)).cast<std::string>() + why);
}

Shape shapeOf(const py::array& array) {
    Shape shape(array.shape(), array.shape() + array.ndim());
    shape.resize(std::max<std::size_t>(shape.size(), 2), 1);
    return shape;
}

HvArrayPtr arrayOf(const py::array& given) {
    const auto array = py::array::ensure(given, py::array::f_style);
    const Shape shape = shapeOf(array);
    const char kind = array.dtype().kind();
    if (kind == 'U' || kind == 'O') return cellsOf(array.attr("flatten")("F"), shape);
    HvArrayPtr made;
    for (std::uint32_t i = hvDOUBLE_CLASS; i <= hvUINT64_CLASS && !made; ++i) {
        const auto classId = static_cast<hvClassID>(i);
        orvex::withElementType(classId, [&]<class Number>(std::type_identity<Number>) {
            if (!py::dtype::of<Number>().equal(array.dtype())) return;
            made.reset(classId == hvLOGICAL_CLASS && array.size() == 1
                           ? hvCreateLogicalScalar(false)
                           : matrix::create_numeric(shape, classId, hvREAL));
            if (array.size() > 0)
                std::memcpy(hvGetDataForWriting(made.get()), array.data(), static_cast<std::size_t>(array.nbytes()));
        });
    }
    if (!made) refuse(given, (" of " + py::str(array.dtype()).cast<std::string>()).c_str());
    return made;
}

bool isNumpy(const py::handle& value) {
    return py::isinstance<py::array>(value) || py::isinstance(value, py::module_::import("numpy").attr("generic"));
}

HvArrayPtr containerOf(const py::handle& value) {
    if (py::isinstance(value, hostClass("StructArray")))
        return structOf(value.attr("_records"), value.attr("fields"), value.attr("shape").cast<Shape>());
    if (py::isinstance<py::dict>(value)) {
        py::list records;
        records.append(value);
        return structOf(records, py::list(py::reinterpret_borrow<py::dict>(value)), {1, 1});
    }
    if (py::isinstance<py::list>(value) || py::isinstance<py::tuple>(value))
        return cellsOf(py::reinterpret_borrow<py::iterable>(value), {py::len(value), 1});
    refuse(value, "");
}

}  // namespace

const hvArray* HeldValue::get() const {
    if (!m_value) throw workbench::Error("the host was left, and the object with it");
    return m_value.get();
}

hvArray* HeldValue::forWriting() {
    get();
    return m_value.get();
}

std::shared_ptr<HeldValue> hold(const hvArray* value) {
    HvArrayPtr copy(hvCreateSharedDataCopy(value));
    hvSetArrayScope(copy.get(), nullptr);
    return makeHeld<HeldValue>(std::move(copy));
}

py::object pythonOf(const hvArray* value) {
    const Descent descent;
    if (value == nullptr) return py::none();
    py::object numbers;
    const auto convert = [&]<class Number>(std::type_identity<Number>) { numbers = numbersOf<Number>(value); };
    if (orvex::withElementType(hvGetClassID(value), convert)) return numbers;
    switch (hvGetClassID(value)) {
        case hvCHAR_CLASS:
            return strOf(ks_host::textOf(value));
        case hvCELL_CLASS:
            return listOf(value);
        case hvSTRUCT_CLASS:
            return structOf(value);
        case hvOBJECT_CLASS:
            return hostClass("Object")(hold(value));
        default:
            return py::none();
    }
}

HvArrayPtr hostOf(const py::handle& value) {
    const Descent descent;
    if (value.is_none()) return ks_host::makeEmpty();
    if (py::isinstance<py::bool_>(value)) return ks_host::makeLogical(value.cast<bool>());
    if (py::isinstance<py::str>(value)) return textOf(value);  // numpy's are texts as well
    if (isNumpy(value)) return arrayOf(py::array::ensure(value));
    if (py::isinstance<py::int_>(value)) return doubleOf(value);
    if (py::isinstance<py::float_>(value)) return ks_host::makeDouble(value.cast<double>());
    if (py::isinstance(value, hostClass("Object")))
        return HvArrayPtr(hvCreateSharedDataCopy(value.attr("_held").cast<const HeldValue&>().get()));
    return containerOf(value);
}

}  // namespace ks_hmi_python
