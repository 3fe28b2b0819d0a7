// GDAL's readers of vector formats, loaded when a map needs them. The functions are declared here, since their signatures are the
// same in all versions and a build needs no headers then.
#pragma once

namespace vorna::drawing::map {

// Objects of the library.
using Gdal_Dataset = void*;
using Gdal_Layer = void*;
using Gdal_Feature = void*;
using Gdal_Geometry = void*;
using Gdal_Definition = void*; // of a layer's fields, or of one field
using Gdal_System = void*;     // a coordinate system

#define VORNA_GDAL_FUNCTIONS(LIST)                                                                                               \
    LIST(void*, CPLSetErrorHandler, (void (*handler)(int level, int number, const char* message)))                               \
    LIST(void, CPLSetConfigOption, (const char* name, const char* value))                                                        \
    LIST(const char*, CPLGetLastErrorMsg, ())                                                                                    \
    LIST(void*, VSIFileFromMemBuffer, (const char* name, unsigned char* bytes, unsigned long long size, int takes_ownership))    \
    LIST(int, VSIFCloseL, (void* file))                                                                                          \
    LIST(                                                                                                                        \
        Gdal_Dataset, GDALOpenEx,                                                                                                \
        (const char* name, unsigned flags, const char* const* drivers, const char* const* options, const char* const* siblings)) \
    LIST(int, GDALDatasetGetLayerCount, (Gdal_Dataset))                                                                          \
    LIST(Gdal_Layer, GDALDatasetGetLayer, (Gdal_Dataset, int number))                                                            \
    LIST(const char*, OGR_L_GetName, (Gdal_Layer))                                                                               \
    LIST(int, OGR_L_GetGeomType, (Gdal_Layer))                                                                                   \
    LIST(Gdal_System, OGR_L_GetSpatialRef, (Gdal_Layer))                                                                         \
    LIST(Gdal_Definition, OGR_L_GetLayerDefn, (Gdal_Layer))                                                                      \
    LIST(void, OGR_L_ResetReading, (Gdal_Layer))                                                                                 \
    LIST(Gdal_Feature, OGR_L_GetNextFeature, (Gdal_Layer))                                                                       \
    LIST(int, OGR_FD_GetFieldCount, (Gdal_Definition))                                                                           \
    LIST(int, OGR_FD_GetFieldIndex, (Gdal_Definition, const char* name))                                                         \
    LIST(Gdal_Definition, OGR_FD_GetFieldDefn, (Gdal_Definition, int number))                                                    \
    LIST(const char*, OGR_Fld_GetNameRef, (Gdal_Definition))                                                                     \
    LIST(int, OGR_Fld_GetType, (Gdal_Definition))                                                                                \
    LIST(int, OGR_F_IsFieldSetAndNotNull, (Gdal_Feature, int field))                                                             \
    LIST(double, OGR_F_GetFieldAsDouble, (Gdal_Feature, int field))                                                              \
    LIST(const char*, OGR_F_GetFieldAsString, (Gdal_Feature, int field))                                                         \
    LIST(Gdal_Geometry, OGR_F_GetGeometryRef, (Gdal_Feature))                                                                    \
    LIST(const char*, OGR_F_GetStyleString, (Gdal_Feature))                                                                      \
    LIST(char**, VSIReadDirRecursive, (const char* folder))                                                                      \
    LIST(void, CSLDestroy, (char** list))                                                                                        \
    LIST(void, OGR_F_Destroy, (Gdal_Feature))                                                                                    \
    LIST(int, OGR_G_GetGeometryType, (Gdal_Geometry))                                                                            \
    LIST(int, OGR_G_IsEmpty, (Gdal_Geometry))                                                                                    \
    LIST(int, OGR_G_HasCurveGeometry, (Gdal_Geometry, int looks_for_curves_only))                                                \
    LIST(Gdal_Geometry, OGR_G_GetLinearGeometry, (Gdal_Geometry, double largest_angle, char** options))                          \
    LIST(void, OGR_G_DestroyGeometry, (Gdal_Geometry))                                                                           \
    LIST(int, OGR_G_GetGeometryCount, (Gdal_Geometry))                                                                           \
    LIST(Gdal_Geometry, OGR_G_GetGeometryRef, (Gdal_Geometry, int number))                                                       \
    LIST(int, OGR_G_GetPointCount, (Gdal_Geometry))                                                                              \
    LIST(int, OGR_G_GetPoints, (Gdal_Geometry, void* x, int x_stride, void* y, int y_stride, void* z, int z_stride))             \
    LIST(const char*, OSRGetAuthorityName, (Gdal_System, const char* part))                                                      \
    LIST(const char*, OSRGetAuthorityCode, (Gdal_System, const char* part))                                                      \
    LIST(const char*, OSRGetName, (Gdal_System))                                                                                 \
    LIST(int, OSRExportToProj4, (Gdal_System, char** text))

// The functions under their own names.
struct Gdal_Library {
#define DECLARE(result, function, arguments) result(*function) arguments;
    VORNA_GDAL_FUNCTIONS(DECLARE)
#undef DECLARE
    // Makes the library's reader of a driver known: "OGRShape" and others. Readers of drivers that the library lacks are left
    // out.
    void (*find_driver(const char* name) const)();

    void* handle;
};

// Loads it at the first call; it stays until the process ends. Throws std::runtime_error, which names Debian's package.
const Gdal_Library& gdal();

} // namespace vorna::drawing::map
