#pragma once
// Link 82: the delimited-text importer, as the run engine sees it. Its
// readers are those of LectorTextoDelimitado.h; this adds the files it asks
// for, their messages, and the layout chosen for the run.

#include <optional>
#include <string>
#include <vector>

#include "importers/Descriptor.h"
#include "importers/texto_delimitado/LectorTextoDelimitado.h"

namespace velmorant {

class ImportadorTextoDelimitado : public Importador {
public:
    /// `unArchivo`: one voucher file holds the whole year ("Un solo archivo").
    ImportadorTextoDelimitado(LecturaDelimitada lectura, bool unArchivo)
        : lectura_(std::move(lectura)), unArchivo_(unArchivo) {}

    int idSistema() const override { return kEnlaceTextoGenerico; }
    TipoImportacion tipo() const override {
        return unArchivo_ ? TipoImportacion::ArchivoUnico : TipoImportacion::MesPorMes;
    }
    bool saldosInicialesAparte() const override { return true; }
    ReglasDestino reglasDestino() const override { return ReglasTextoDelimitado(); }
    bool validaArchivos(Sesion& s, const ArchivosImportacion& a) override;

    void ImportaCatalogo(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaSaldosIniciales(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizas(Sesion& s, DestinoTmp& d, const ArchivosImportacion& a) override;
    void ImportaPolizasMes(Sesion& s, DestinoTmp& d, int mes, const std::string& ruta) override;
    void ImportaSaldosAnioAnterior(Sesion& s, DestinoTmp& d, const std::string& ruta) override;

    const LecturaDelimitada& lectura() const { return lectura_; }

private:
    LecturaDelimitada lectura_;
    bool unArchivo_;
};

/// The descriptor of link 82: its files, pickers, messages and options.
DescriptorImportador DescriptorTextoDelimitado();

// What other importers reuse when they take their chart and opening
// balances through a saved layout of this link (the printed-report
// importers, whose reports hold only the vouchers).

/// The chart and opening-balance files, with their pickers and messages.
std::vector<ArchivoDescrito> ArchivosCatalogoDelimitado();
/// The check boxes (tabs, no title row) and options (delimiter, layout).
std::vector<CasillaDescrita> CasillasLecturaDelimitada();
std::vector<ParametroDescrito> ParametrosLecturaDelimitada();
/// How the files of a run are read, from those choices. Throws
/// ParametroInvalido for a choice it cannot use; nothing when the saved
/// layout refuses (its message shown).
std::optional<LecturaDelimitada> LecturaDelimitadaElegida(Sesion& s, const ArchivosImportacion& a);

/// The delimiter chosen: --separador C or --tabulador, exactly one of them
/// (ParametroInvalido otherwise).
std::string SeparadorElegido(const ArchivosImportacion& a);

/// Before a run: every delimited file chosen (chart, opening balances,
/// prior-year file and, with `conPolizas`, the first voucher file) is split
/// by the delimiter chosen; the first that is not throws ParametroInvalido
/// with "El archivo ... no se encuentra delimitado por el caracter que
/// indico." and the line.
void VerificaDelimitador(const ArchivosImportacion& a, bool conPolizas);

}  // namespace velmorant
