// node acceptor.js <port> <folder>: an acceptor, THEM to US, that reports each order as filled. The
// id of an order can ask for more: `cut-` ends the link instead, `lost-` ends it before the report
// is on the wire, `bye-` logs out after the report.
'use strict'

const { Launcher, PrintingSession, description, print } = require('./session')
const { FixMsgStoreRecord } = require('jspurefix')

// What was sent, for resend requests: each link has a session object of its own.
const reports = []

class Acceptor extends PrintingSession {
  constructor (config) {
    super(config)
    reports.forEach(report => this.store.put(report))
  }

  onApplicationMsg (type, view) {
    if (type !== 'D') {
      return
    }
    const order = view.toObject()
    const id = order.ClOrdID
    if (id.startsWith('cut-')) {
      this.cut()
    } else if (id.startsWith('lost-')) {
      this.transport.duplex.socket.cork()
      this.report(order, () => setImmediate(() => this.cut()))
    } else {
      this.report(order, () => id.startsWith('bye-') && this.done())
    }
  }

  report (order, whenSent) {
    const report = {
      OrderID: `O-${order.ClOrdID}`,
      ClOrdID: order.ClOrdID,
      Parties: order.Parties,
      ExecID: `E-${order.ClOrdID}`,
      ExecType: 'F',
      OrdStatus: '2',
      Instrument: order.Instrument,
      Side: order.Side,
      LeavesQty: 0,
      CumQty: order.OrderQtyData.OrderQty,
      AvgPx: order.Price
    }
    this.send('8', report, (error, result) => {
      if (!error) {
        const number = result.header.MsgSeqNum
        reports.push(new FixMsgStoreRecord('8', new Date(), number, report))
        this.store.put(reports.at(-1))
        whenSent()
      }
    })
  }
}

const [port, store] = process.argv.slice(2)
const launcher = new Launcher(null, description('acceptor', 'THEM', 'US', port, store),
  config => new Acceptor(config))
launcher.run().catch(error => print(`failed: ${error}`))
