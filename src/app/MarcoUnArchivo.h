#pragma once
// The frame of the generic importers whose vouchers may come as one file
// for the whole year ("Un solo archivo") instead of a file per month, with
// what their parameters forms are given from it.

#include "app/MarcoImportador.h"
#include "app/frm083ParametrosTextoGenerico.h"

namespace velmorant::app {

class MarcoUnArchivo : public MarcoImportador {
public:
    /// `conservaCierre`: the closing month keeps its row and its file beside
    /// the year's one file.
    MarcoUnArchivo(Sesion& sesion, DescripcionMarco descripcion, bool conservaCierre, QWidget* padre = nullptr);

    QCheckBox* chkUnArchivo;

    /// With "Un solo archivo" the January row is the year's one file.
    ArchivosImportacion Archivos() const override;

protected:
    bool ValidaPolizas() override;
    bool mesDisponible(int mes) const override;
    /// The files and the tab in hand, as a parameters form takes them: the
    /// year's file, else the first month's, stands for the vouchers.
    EntradaParametros EntradaDeParametros(const std::string& configuracion) const;

private:
    bool conservaCierre_;

    void chkUnArchivo_Click(bool marcado);
};

}  // namespace velmorant::app
