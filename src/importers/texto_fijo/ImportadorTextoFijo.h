#pragma once
// Link 25: the fixed-position text importer, as the run engine sees it. Its
// readers are those of LectorTextoFijo.h; this adds the files it asks for,
// their messages, the layout chosen for the run and its `IdPoliza` counter.

#include <string>

#include "importers/Descriptor.h"
#include "importers/texto_fijo/LectorTextoFijo.h"

namespace velmorant {

class ImportadorTextoFijo : public Importador {
public:
    /// `contadorIdPoliza`: the `IdPoliza` counter of the form that runs the
    /// importer, which starts at 0 when the form loads and is never reset,
    /// so that a second run of the same form goes on counting; it must
    /// outlive the importer. Null: the importer's own, from 0.
    explicit ImportadorTextoFijo(EstructuraDatosTxt config, long* contadorIdPoliza = nullptr)
        : config_(config), contador_(contadorIdPoliza ? contadorIdPoliza : &propio_) {}
    ImportadorTextoFijo(const ImportadorTextoFijo&) = delete;
    ImportadorTextoFijo& operator=(const ImportadorTextoFijo&) = delete;

    int idSistema() const override { return kEnlaceTxtPersonalizado; }
    TipoImportacion tipo() const override { return TipoImportacion::MesPorMes; }
    ReglasDestino reglasDestino() const override { return ReglasTextoFijo(contador_); }

    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) override;

    const EstructuraDatosTxt& config() const { return config_; }
    long contadorIdPoliza() const { return *contador_; }

private:
    EstructuraDatosTxt config_;
    long propio_ = 0;
    long* contador_;
};

/// The descriptor of link 25: its files, pickers, messages and the layout.
DescriptorImportador DescriptorTextoFijo();

}  // namespace velmorant
