// node initiator.js <port> <folder>: an initiator, US to THEM, that sends three orders, one after
// the other is filled. It cuts the link before it reads the reports of the second one.
'use strict'

const { Launcher, PrintingSession, description, print } = require('./session')

class Initiator extends PrintingSession {
  onReady (view) {
    super.onReady(view)
    if (!Initiator.isUnderWay) {
      Initiator.isUnderWay = true
      this.order('first')
    }
  }

  onApplicationMsg (type, view) {
    const report = view.toObject()
    if (type !== '8' || report.OrdStatus !== '2') {
      return
    }
    if (report.ClOrdID === 'first') {
      this.transport.duplex.socket.pause()
      this.order('second', () => setTimeout(() => this.cut(), 500))
    } else if (report.ClOrdID === 'second') {
      this.order('third')
    } else {
      this.done()
      setTimeout(() => launcher.stop(), 1000)
    }
  }

  order (id, whenSent) {
    this.send('D', {
      ClOrdID: id,
      Parties: {
        NoPartyIDs: [
          {
            PartyID: 'BROKER',
            PartyIDSource: 'D',
            PartyRole: 1,
            PtysSubGrp: {
              NoPartySubIDs: [
                { PartySubID: 'DESK', PartySubIDType: 4 },
                { PartySubID: 'FLOOR', PartySubIDType: 5 }
              ]
            }
          },
          { PartyID: 'CLIENT', PartyIDSource: 'D', PartyRole: 3 }
        ]
      },
      Instrument: { Symbol: 'IBM' },
      Side: '1',
      TransactTime: new Date(),
      OrderQtyData: { OrderQty: 100 },
      OrdType: '2',
      Price: 10.5
    }, whenSent)
  }
}

const [port, store] = process.argv.slice(2)
const launcher = new Launcher(description('initiator', 'US', 'THEM', port, store), null,
  config => new Initiator(config))
launcher.run().then(() => print('ended'), error => print(`failed: ${error}`))
