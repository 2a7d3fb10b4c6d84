#pragma once
// How every selecting rule registers one account in `SeleccionDetalle`.
//
// When a rule starts it takes a view of the month's rows of its integration
// account: the rows of the rules that ran before it, not those it adds
// itself. An account found there with `VerObs` not 1 is registered again as
// a remark (`VerObs` 1, `Obs` naming the earlier rule), which counts in no
// rule's total. Every registered account gets `Cuentas.PorRevisar`, which
// nothing here clears.

#include <map>
#include <string>

#include "platform/Moneda.h"
#include "session/Sesion.h"

namespace velmorant {

inline constexpr const char* kYaSeleccionada = "Cuenta ya seleccionada por el criterio: ";

class RegistroSeleccion {
public:
    /// Whether an earlier rule of the month already took the account.
    struct Marca {
        bool yaSeleccionada = false;
        int verObs = 0;
        std::string nombreCriterio;
    };

    /// Takes the view of the month's rows of the integration account.
    RegistroSeleccion(Sesion& s, const std::string& ctaIntegracion, int mes);

    /// The first row of the view for the account whose `VerObs` is not 1.
    Marca marca(const std::string& cuenta) const;
    /// Adds the row to `SeleccionDetalle` with `Saldo` = `saldo`, its
    /// integration account cut from the code, and marks the account in
    /// `Cuentas` for review.
    void registra(const std::string& cuenta, Moneda saldo, long idCriterio, const Marca& marca);
    void registra(const std::string& cuenta, Moneda saldo, long idCriterio) {
        registra(cuenta, saldo, idCriterio, marca(cuenta));
    }

private:
    struct FilaVista {
        long idCriterio;
        std::string ctaIntegracion;
        int verObs;
    };
    Sesion& s_;
    int mes_;
    std::multimap<std::string, FilaVista> vista_;  // by account in capitals, in table order
};

/// An account code in capitals, as the engine compares codes.
std::string ClaveCuenta(const std::string& cuenta);

/// Characters of an integration account: the length of the first level.
int LongitudIntegracion(const Sesion& s);

/// " FROM SeleccionDetalleTmp WHERE" the candidates of an integration account
/// on one side of their nature; binds LongitudIntegracion and the account.
std::string CandidatasDeIntegracion(bool contraNat);

}  // namespace velmorant
