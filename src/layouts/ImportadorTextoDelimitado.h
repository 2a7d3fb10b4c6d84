#pragma once
// Link 82: the delimited-text importer, as the run engine sees it. Its
// readers are those of TextoDelimitado.h; this adds the files it asks for,
// their messages, and the layout chosen for the run.

#include <string>

#include "importers/Importador.h"
#include "layouts/TextoDelimitado.h"

namespace velmorant {

class ImportadorTextoDelimitado : public Importador {
public:
    /// `unArchivo`: one voucher file holds the whole year ("Un solo archivo").
    ImportadorTextoDelimitado(LecturaDelimitada lectura, bool unArchivo)
        : lectura_(std::move(lectura)), unArchivo_(unArchivo) {}

    int idSistema() const override { return 82; }
    std::string titulo() const override { return "Texto Generico delimitado por caracter"; }
    std::string filtroArchivos() const override { return "*.txt|*.txt"; }
    TipoImportacion tipo() const override {
        return unArchivo_ ? TipoImportacion::ArchivoUnico : TipoImportacion::MesPorMes;
    }
    bool saldosInicialesAparte() const override { return true; }
    bool tieneAnioAnterior() const override { return true; }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;

    void ImportaCatalogo(Sesion& s, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, int mes, const std::string& ruta) override;
    void ImportaSaldosAnioAnterior(Sesion& s, const std::string& ruta) override;

    const LecturaDelimitada& lectura() const { return lectura_; }

private:
    LecturaDelimitada lectura_;
    bool unArchivo_;
};

/// Makes `nombre` the company's layout for link 82: copies it from the
/// catalogue into the company database and loads it into `lectura`, as the
/// parameter form does on accepting. False, after its message, when the
/// catalogue has no such layout.
bool UsaConfiguracionTexto(Sesion& s, const std::string& nombre, LecturaDelimitada& lectura);

}  // namespace velmorant
